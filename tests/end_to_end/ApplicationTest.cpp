// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The application as its user has it: the built program on a desktop with a panel, a bus, a sound server and
// a network of its own. The user presses keys and buttons, speaks, hears, and reads what a screen reader
// reads.
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDateTime>
#include <csignal>
#include <fstream>
#include <optional>

#include "app/NetworkNamespace.h"
#include "auth/TokenStore.h"
#include "foundation/UserDefaults.h"
#include "platform/audio/AudioFile.h"
#include "support/OtherProgram.h"
#include "support/Program.h"
#include "support/ScreenReader.h"
#include "support/SoundServer.h"
#include "support/Speech.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::eventually;
using tests::OtherProgram;
using tests::Program;
using tests::Samples;
using tests::ScreenReader;
using tests::SoundServer;
using tests::xdotool;

bool hasOwnNetwork = false;
constexpr std::chrono::milliseconds kMoment{300};

Samples question(const char *name) {
  AudioFile file(fs::path(VELMORA_QUESTIONS) / name);
  Samples all(static_cast<std::size_t>(10 * AudioSource::sampleRate));
  all.resize(file.read(all).samples);
  return all;
}

/// The processes that have this one as their parent, zombies included.
std::vector<pid_t> childrenOf(pid_t parent) {
  std::vector<pid_t> all;
  const std::string task = "/proc/" + std::to_string(parent) + "/task";
  for (const auto &thread : fs::directory_iterator(task)) {
    std::ifstream file(thread.path() / "children");
    for (pid_t child = 0; file >> child;) all.push_back(child);
  }
  return all;
}

std::string commandOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

class Desktop : public ::testing::Test {
 protected:
  Desktop() {
    if (!hasOwnNetwork) return;
    const std::string address = "unix:path=" + (m_home.path() / "bus").string();
    fs::permissions(m_home.path(), fs::perms::owner_all);
    for (const char *name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
      qputenv(name, m_home.path().c_str());
    m_bus.emplace(
        "dbus-daemon",
        std::vector<std::string>{"--session", "--nofork", "--print-address", "--address=" + address},
        Program::Environment{});
    if (!m_bus->waitForOut("unix:")) throw std::runtime_error("no bus: " + m_bus->err());
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.c_str());
    m_reader.emplace();
  }

  /// Whatever is open: it ends when it is told to, and takes all that it started along.
  void TearDown() override {
    if (m_velmora && m_velmora->isRunning()) {
      const auto children = childrenOf(m_velmora->pid());
      m_velmora->signal(SIGTERM);
      EXPECT_EQ(m_velmora->wait(), 0) << m_velmora->err();
      for (const pid_t child : children) EXPECT_TRUE(eventually([&] { return ::kill(child, 0) != 0; }));
    }
    for (auto *program : {&m_panel, &m_bus})
      if (*program) (*program)->signal(SIGTERM);
  }

  void SetUp() override {
    if (!hasOwnNetwork) GTEST_SKIP() << "this system permits no network of one's own";
  }

  void startPanel() {
    m_panel.emplace("trayer",
                    std::vector<std::string>{"--edge", "top", "--align", "right", "--widthtype", "request",
                                             "--height", "24", "--SetDockType", "true"},
                    Program::Environment{});
  }
  /// Each but the running one ends by itself.
  static Program::Environment environment() {
    Program::Environment all{{"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}, {"LANG", "C.UTF-8"}};
    // Chromium does not run as root in its sandbox.
    if (::getuid() == 0) all.emplace_back("QTWEBENGINE_DISABLE_SANDBOX", "1");
#if defined(__SANITIZE_ADDRESS__)
    // The engine deletes by other sizes than it asks for, and the graphics drivers leak.
    const char *const options = std::getenv("ASAN_OPTIONS");
    all.emplace_back("ASAN_OPTIONS", std::string(options ? options : "") + ":new_delete_type_mismatch=0");
    all.emplace_back("QT_XCB_GL_INTEGRATION", "none");
#endif
    return all;
  }
  void start(const std::vector<std::string> &arguments = {}) {
    m_velmora.emplace(VELMORA, arguments, environment());
  }
  static int startAgain(const std::vector<std::string> &arguments) {
    return Program(VELMORA, arguments, environment()).wait();
  }

  static bool clickIcon() { return xdotool({"mousemove", "1268", "12", "click", "1"}); }
  static bool type(const std::vector<std::string> &keys) {
    std::vector<std::string> arguments{"key"};
    arguments.insert(arguments.end(), keys.begin(), keys.end());
    return xdotool(arguments);
  }
  [[nodiscard]] bool sees(const std::string &role, const std::string &name) const {
    return m_reader->waitFor(role, name).has_value();
  }
  /// Waits until the next key goes to the button of this name.
  [[nodiscard]] bool isAt(const std::string &button) const {
    return eventually([&] {
      const auto found = m_reader->waitFor("push button", button);
      return found && found->isFocused;
    });
  }
  [[nodiscard]] bool seesNoMore(const std::string &role, const std::string &name) const {
    return m_reader->waitForEndOf(role, name);
  }
  [[nodiscard]] bool isShown(const std::string &name) const {
    for (const auto &element : m_reader->elements())
      if (element.name == name) return true;
    return false;
  }
  /// Chooses from the menu that is about to open. Menus are told to screen readers as they get the focus, and
  /// are not found among the windows: what the choice brings tells that it was there.
  template <typename Condition>
  [[nodiscard]] static bool choose(const std::vector<std::string> &keys, const Condition &until,
                                   std::chrono::milliseconds pause = kMoment,
                                   std::chrono::milliseconds limit = tests::kPatience) {
    const auto end = std::chrono::steady_clock::now() + limit;
    do {
      std::this_thread::sleep_for(pause);
      if (!type(keys)) return false;
      std::this_thread::sleep_for(pause);
      if (until()) return true;
    } while (std::chrono::steady_clock::now() < end);
    return false;
  }
  void say(const char *name) { m_sound.say(question(name), "mic", AudioSource::sampleRate); }

  /// The settings as they are on disk.
  [[nodiscard]] UserDefaults defaults() const {
    return UserDefaults(QString::fromStdString((m_home.path() / "velmora" / "defaults.json").string()));
  }
  [[nodiscard]] bool isSignedIn() const { return defaults().boolForKey(kLoggedInKey); }

  void signIn() {
    // The icon comes a moment after the program.
    ASSERT_TRUE(eventually([this] {
      return isShown("Sign in to Velmora") || !clickIcon() ||
             choose(
                 {"Down", "Return"}, [this] { return isShown("Sign in to Velmora"); }, kMoment, kMoment);
    }));
    // What is in the page the reader is not told. The first button there allows it.
    ASSERT_TRUE(sees("web document", ""));
    ASSERT_TRUE(choose(
        {"Tab", "Return"}, [this] { return isSignedIn(); }, 3 * kMoment));
    ASSERT_TRUE(seesNoMore("", "Sign in to Velmora"));
  }

  tests::TemporaryFolder m_home;
  std::optional<Program> m_bus;
  std::optional<ScreenReader> m_reader;
  SoundServer m_sound;
  std::optional<Program> m_panel;
  std::optional<Program> m_velmora;
};

TEST_F(Desktop, ADayOfItsUser) {
  startPanel();
  start();
  // The first start says where it is, for five seconds.
  ASSERT_TRUE(sees("label", "This is where Velmora is")) << m_reader->text();
  EXPECT_TRUE(eventually([&] { return defaults().boolForKey(QStringLiteral("isFirstTime")); }));
  EXPECT_TRUE(seesNoMore("label", "This is where Velmora is"));
  ASSERT_NO_FATAL_FAILURE(signIn());

  // A click, a question, an answer that is heard.
  ASSERT_TRUE(clickIcon());
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  {
    const auto loudspeaker = m_sound.record();
    say("01-what-time-is-it.wav");
    EXPECT_TRUE(sees("label", "\"What time is it\"")) << m_reader->text();
    EXPECT_TRUE(sees("push button", "Stop speaking"));
    EXPECT_EQ(loudspeaker->waitForSound(22050).size(), 22050U);
    ASSERT_TRUE(isAt("Talk")) << "the answer ends";
  }
  // A question back opens the microphone again; an answer that goes on is silenced by a key.
  ASSERT_TRUE(type({"space"}));
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  say("09-lets-play-a-guessing-game.wav");
  EXPECT_TRUE(sees("label", "\"Let's play a guessing game\"")) << m_reader->text();
  ASSERT_TRUE(sees("label", "Listening…")) << "by itself";
  say("10-fifty.wav");
  ASSERT_TRUE(isAt("Stop speaking"));
  ASSERT_TRUE(type({"space"}));
  ASSERT_TRUE(sees("push button", "Talk"));
  EXPECT_FALSE(isShown("Listening…"));

  // A double click opens and closes: the microphone stays closed.
  ASSERT_TRUE(type({"Escape"}));
  ASSERT_TRUE(seesNoMore("push button", "Talk"));
  ASSERT_TRUE(clickIcon());  // finds what it opened closed already
  std::this_thread::sleep_for(2 * kMoment);
  ASSERT_TRUE(xdotool({"mousemove", "1268", "12", "click", "--repeat", "2", "--delay", "60", "1"}));
  std::this_thread::sleep_for(3 * kMoment);
  EXPECT_FALSE(m_sound.isHeardBySomebody());
  ASSERT_TRUE(clickIcon());
  ASSERT_TRUE(sees("label", "Listening…"));

  // Escape closes; then the shortcut reaches it whoever has the focus. The first press finds what it opened
  // closed already.
  ASSERT_TRUE(type({"Escape"}));
  ASSERT_TRUE(seesNoMore("push button", "Talk"));
  {
    OtherProgram other;
    ASSERT_TRUE(eventually([&] { return other.hasFocus(); }));
    ASSERT_TRUE(type({"super+F2"}));
    ASSERT_TRUE(eventually([&] { return other.hasFocus(); }));
    ASSERT_TRUE(type({"super+F2"}));
    ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  }
  ASSERT_TRUE(type({"Escape"}));

  // Signing out in the menu deletes what would sign in again.
  EXPECT_EQ(startAgain({}), 0);
  ASSERT_TRUE(m_reader->press("push button", "Menu"));
  ASSERT_TRUE(choose({"Down", "Down", "Down", "Return"}, [this] { return !isSignedIn(); }));
  EXPECT_TRUE(eventually([&] {
    const UserDefaults stored = defaults();
    return !stored.objectForKey(kAuthTokenKey).isValid() &&
           !stored.objectForKey(kRefreshTokenKey).isValid() && !stored.objectForKey(kExpiresInKey).isValid();
  }));
  EXPECT_TRUE(seesNoMore("push button", "Talk"));

  const auto children = childrenOf(m_velmora->pid());
  EXPECT_EQ(startAgain({"--quit"}), 0);
  EXPECT_EQ(m_velmora->wait(), 0) << m_velmora->err();
  for (const pid_t child : children) EXPECT_TRUE(eventually([&] { return ::kill(child, 0) != 0; }));
  EXPECT_THAT(m_velmora->out(), Not(HasSubstr("Not First Time")));

  // The second start has nothing to explain.
  start();
  ASSERT_TRUE(m_velmora->waitForOut("Not First Time"));
  ASSERT_NO_FATAL_FAILURE(signIn());
  EXPECT_FALSE(isShown("This is where Velmora is"));
}

TEST_F(Desktop, WithoutNetworkItSaysSo) {
  startPanel();
  start();
  ASSERT_NO_FATAL_FAILURE(signIn());
  ASSERT_TRUE(tests::ip("link set velmora0 down"));
  ASSERT_TRUE(sees("label", "Network is not available.")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "OK"));
  ASSERT_TRUE(seesNoMore("label", "Network is not available."));
  ASSERT_TRUE(type({"super+F2"}));
  ASSERT_TRUE(sees("label", "Google Assistant Alert")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "OK"));
  ASSERT_TRUE(seesNoMore("label", "Google Assistant Alert"));
  // The click opens the window, which will not listen.
  ASSERT_TRUE(clickIcon());
  ASSERT_TRUE(sees("label", "Alexa Alert")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "OK"));
  ASSERT_TRUE(isAt("Talk"));
  ASSERT_TRUE(tests::ip("link set velmora0 up"));
  ASSERT_TRUE(tests::ip("route replace default via 10.9.0.2"));
  // The kernel finds the carrier a moment later.
  ASSERT_TRUE(eventually([] {
    return tests::run({"sh", "-c", "ip link show velmora0 | grep -q 'state UP'"});
  }));
  ASSERT_TRUE(type({"space"}));
  EXPECT_TRUE(sees("label", "Listening…")) << m_reader->text();
  // Without a microphone that is all there is to say.
  m_sound.unplugMicrophone("mic");
  ASSERT_TRUE(type({"super+F2"}));
  EXPECT_TRUE(sees("label", "Please attach Audio Input device to start with Google Assistant"));
}

TEST_F(Desktop, TheLocalAssistantComesBackAndNeverStaysBehind) {
  startPanel();
  start();
  ASSERT_NO_FATAL_FAILURE(signIn());
  const auto assistant = [&]() -> pid_t {
    for (const pid_t child : childrenOf(m_velmora->pid()))
      if (commandOf(child) == "velmora-assista") return child;
    return 0;
  };
  const pid_t first = assistant();
  ASSERT_NE(first, 0);
  ASSERT_TRUE(clickIcon());
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  ASSERT_EQ(::kill(first, SIGKILL), 0);
  EXPECT_TRUE(isAt("Talk")) << m_reader->text();
  ASSERT_TRUE(eventually([&] { return assistant() != 0 && assistant() != first; }));
  ASSERT_TRUE(isAt("Talk"));
  ASSERT_TRUE(type({"space"}));
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  say("01-what-time-is-it.wav");
  EXPECT_TRUE(sees("label", "\"What time is it\"")) << m_reader->text();
  const pid_t second = assistant();
  m_velmora->signal(SIGKILL);
  EXPECT_EQ(m_velmora->wait(), -1);
  EXPECT_TRUE(eventually([&] { return ::kill(second, 0) != 0; }));
}

TEST_F(Desktop, TheSpokenCommandOpensThePopover) {
  startPanel();
  {
    UserDefaults stored(QString::fromStdString((m_home.path() / "velmora" / "defaults.json").string()));
    fs::create_directories(m_home.path() / "velmora");
    stored.setObject(true, QStringLiteral("HotwordEnable"));
    ASSERT_TRUE(stored.synchronize());
  }
  start();
  ASSERT_NO_FATAL_FAILURE(signIn());
  const Samples command = tests::joined(
      {tests::silence(2500), tests::spoken("okay mac", tests::Speaker::slt), tests::silence(1500)});
  m_sound.say(command, "mic", AudioSource::sampleRate);
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  say("01-what-time-is-it.wav");
  EXPECT_TRUE(sees("label", "\"What time is it\"")) << m_reader->text();
  // All of it without eyes and hands: a press ends what is said, and closes.
  ASSERT_TRUE(isAt("Talk"));
  ASSERT_TRUE(m_reader->press("push button", "Talk"));
  ASSERT_TRUE(m_reader->press("push button", "Stop listening"));
  ASSERT_TRUE(isAt("Talk"));
  ASSERT_TRUE(m_reader->press("push button", "Close"));
  EXPECT_TRUE(seesNoMore("push button", "Talk"));
}

TEST_F(Desktop, ACrashLeavesAReportThatTheUserDecidesAbout) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers report crashes themselves";
#endif
  startPanel();
  start();
  ASSERT_TRUE(sees("label", "This is where Velmora is"));
  m_velmora->signal(SIGSEGV);
  EXPECT_EQ(m_velmora->wait(), -1);
  const auto reports = [this] {
    int count = 0;
    for (const auto &file : fs::recursive_directory_iterator(m_home.path() / "velmora" / "crashes"))
      count += file.is_regular_file() ? 1 : 0;
    return count;
  };
  EXPECT_EQ(reports(), 1);
  start();
  ASSERT_TRUE(sees("label", "Velmora ended unexpectedly the last time.")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "Delete the Report"));
  EXPECT_TRUE(eventually([&] { return reports() == 0; }));
}

TEST_F(Desktop, WithoutAPanelItShowsItselfAndOneThatComesIsUsed) {
  start({"--preferences"});
  EXPECT_TRUE(sees("check box", "Run Velmora when I log in")) << m_reader->text();
  EXPECT_TRUE(sees("", "Sign in to Velmora")) << m_reader->text();
  startPanel();
  ASSERT_TRUE(sees("label", "This is where Velmora is")) << m_reader->text();
}

TEST_F(Desktop, AMissingPartIsSaidAndTheRestGoesOn) {
  UserDefaults settings = defaults();
  for (const QLatin1String key : {kAuthTokenKey, kRefreshTokenKey})
    settings.setObject(QStringLiteral("of another time"), key);
  settings.setObject(QDateTime::currentDateTimeUtc().addDays(-1), kExpiresInKey);
  settings.setObject(true, QStringLiteral("isFirstTime"));
  settings.setObject(true, kLoggedInKey);
  settings.synchronize();
  startPanel();
  const fs::path program = VELMORA;
  const fs::path parts = VELMORA_PARTS;
  const struct {
    const char *part, *line, *shown;
  } cases[] = {{"velmora-conversation.so", "The assistant cannot be spoken with: ",
                "A part of Velmora is missing or damaged. Please install Velmora again."},
               {"velmora-sound-engine.so", "Audio error: sound cannot be had: ", "Google Assistant"},
               {"velmora-http-engine.so", "Token refresh error: requests cannot be sent: ", nullptr}};
  for (const auto &c : cases) {
    const tests::TemporaryFolder place;
    const fs::path folder = place.path() / "bin";
    const fs::path others = (folder / parts.lexically_relative(program.parent_path())).lexically_normal();
    fs::create_directories(folder);
    fs::create_directories(others);
    fs::copy(program, folder / "velmora");
    fs::create_symlink(program.parent_path() / "velmora-assistant", folder / "velmora-assistant");
    for (const auto &part : fs::directory_iterator(parts))
      if (part.path().filename() != c.part) fs::create_symlink(part, others / part.path().filename());
    m_velmora.emplace((folder / "velmora").string(), std::vector<std::string>{}, environment());
    ASSERT_TRUE(m_velmora->waitForOut("Not First Time"));
    EXPECT_EQ(startAgain({"--listen"}), 0);
    EXPECT_TRUE(m_velmora->waitForOut(c.line)) << m_velmora->out();
    EXPECT_TRUE(c.shown == nullptr || eventually([&] { return isShown(c.shown); })) << c.part;
    ASSERT_TRUE(m_velmora->isRunning()) << c.part;
    m_velmora->signal(SIGTERM);
    EXPECT_EQ(m_velmora->wait(), 0) << c.part;
  }
}

TEST_F(Desktop, WrongArgumentsAndDeploymentsAreSaidInALine) {
  const std::pair<std::vector<std::string>, std::pair<int, const char *>> cases[] = {
      {{"--nonsense"}, {2, "velmora: unknown argument: --nonsense; see velmora --help\n"}},
      {{"--listen", "--quit"}, {2, "velmora: one thing at a time: --quit; see velmora --help\n"}},
      {{"--quit"}, {1, "velmora: Velmora is not running\n"}},
      {{"--deployment", "/nowhere"}, {1, "velmora: "}}};
  for (const auto &[arguments, end] : cases) {
    Program program(VELMORA, arguments, environment());
    EXPECT_EQ(program.wait(), end.first);
    EXPECT_THAT(program.err(), HasSubstr(end.second));
  }
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  using velmora::tests::ip;
  // Before all else: threads stay where they were.
  velmora::hasOwnNetwork = velmora::tests::enterOwnNetwork() && ip("link set lo up") &&
                           ip("link add velmora0 type veth peer name velmora1") &&
                           ip("addr add 10.9.0.1/24 dev velmora0") && ip("link set velmora1 up") &&
                           ip("link set velmora0 up") && ip("route add default via 10.9.0.2");
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
