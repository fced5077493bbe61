// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The application as its user has it: the built program on a desktop with a panel, a bus, a sound server and
// a network of its own. The user presses keys and buttons, speaks, hears, and reads what a screen reader
// reads.
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <csignal>
#include <optional>

#include "auth/TokenStore.h"
#include "support/AudioFiles.h"
#include "support/OtherProgram.h"
#include "support/ScreenReader.h"
#include "support/Speech.h"
#include "support/UserSession.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::childrenOf;
using tests::eventually;
using tests::OtherProgram;
using tests::Program;
using tests::UserSession;

bool hasOwnNetwork = false;
constexpr std::chrono::milliseconds kMoment{300};

class Desktop : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!hasOwnNetwork) GTEST_SKIP() << "this system permits no network of one's own";
    m_session.emplace();
    m_reader.emplace();
  }
  /// Whatever is open: it ends when it is told to, and takes all that it started along.
  void TearDown() override {
    if (!m_velmora || !m_velmora->isRunning()) return;
    const auto children = childrenOf(m_velmora->pid());
    m_velmora->signal(SIGTERM);
    expectEndWith(children);
  }
  void expectEndWith(const std::vector<pid_t> &children) {
    EXPECT_EQ(m_velmora->wait(), 0) << m_velmora->err();
    for (const pid_t child : children) EXPECT_TRUE(eventually([&] { return ::kill(child, 0) != 0; }));
  }

  void start(const std::vector<std::string> &arguments = {}, const std::string &program = VELMORA) {
    m_velmora.emplace(program, arguments, UserSession::environment(true));
  }
  void startWithPanel() {
    m_session->startPanel();
    start();
  }
  /// Each but the running one ends by itself.
  static int startAgain(const std::vector<std::string> &arguments) {
    return Program(VELMORA, arguments, UserSession::environment(true)).wait();
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
      UserSession::type(keys);
      std::this_thread::sleep_for(pause);
      if (until()) return true;
    } while (std::chrono::steady_clock::now() < end);
    return false;
  }
  void hear(const tests::Samples &samples) {
    m_session->sound().say(samples, "mic", AudioSource::sampleRate);
  }
  void say(const char *name) { hear(tests::readAudio(fs::path(VELMORA_QUESTIONS) / name).samples); }

  /// The settings as they are on disk.
  [[nodiscard]] UserDefaults defaults() const { return m_session->defaults(); }
  [[nodiscard]] bool isSignedIn() const { return defaults().boolForKey(kLoggedInKey); }

  void signIn() {
    // The icon comes a moment after the program.
    ASSERT_TRUE(eventually([this] {
      const auto isOpen = [this] { return isShown("Sign in to Velmora"); };
      if (isOpen()) return true;
      UserSession::clickIcon();
      return choose({"Down", "Return"}, isOpen, kMoment, kMoment);
    }));
    // What is in the page the reader is not told. The first button there allows it.
    ASSERT_TRUE(sees("web document", ""));
    ASSERT_TRUE(choose(
        {"Tab", "Return"}, [this] { return isSignedIn(); }, 3 * kMoment));
    ASSERT_TRUE(seesNoMore("", "Sign in to Velmora"));
  }

  std::optional<UserSession> m_session;
  std::optional<tests::ScreenReader> m_reader;
  std::optional<Program> m_velmora;
};

TEST_F(Desktop, ADayOfItsUser) {
  startWithPanel();
  // The first start says where it is, for five seconds.
  ASSERT_TRUE(sees("label", "This is where Velmora is")) << m_reader->text();
  EXPECT_TRUE(eventually([&] { return defaults().boolForKey(QStringLiteral("isFirstTime")); }));
  EXPECT_TRUE(seesNoMore("label", "This is where Velmora is"));
  ASSERT_NO_FATAL_FAILURE(signIn());

  // A click, a question, an answer that is heard.
  UserSession::clickIcon();
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  {
    const auto loudspeaker = m_session->sound().record();
    say("01-what-time-is-it.wav");
    EXPECT_TRUE(sees("label", "\"What time is it\"")) << m_reader->text();
    EXPECT_TRUE(sees("push button", "Stop speaking"));
    EXPECT_EQ(loudspeaker->waitForSound(22050).size(), 22050U);
    ASSERT_TRUE(isAt("Talk")) << "the answer ends";
  }
  // A question back opens the microphone again; an answer that goes on is silenced by a key.
  UserSession::type({"space"});
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  say("09-lets-play-a-guessing-game.wav");
  EXPECT_TRUE(sees("label", "\"Let's play a guessing game\"")) << m_reader->text();
  ASSERT_TRUE(sees("label", "Listening…")) << "by itself";
  say("10-fifty.wav");
  ASSERT_TRUE(isAt("Stop speaking"));
  UserSession::type({"space"});
  ASSERT_TRUE(sees("push button", "Talk"));
  EXPECT_FALSE(isShown("Listening…"));

  // Escape closes; then the shortcut reaches it whoever has the focus. The first press finds what it opened
  // closed already.
  UserSession::type({"Escape"});
  ASSERT_TRUE(seesNoMore("push button", "Talk"));
  {
    OtherProgram other;
    ASSERT_TRUE(eventually([&] { return other.hasFocus(); }));
    UserSession::type({"super+F2"});
    ASSERT_TRUE(eventually([&] { return other.hasFocus(); }));
    UserSession::type({"super+F2"});
    ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  }
  UserSession::type({"Escape"});

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
  expectEndWith(children);
  EXPECT_THAT(m_velmora->out(), Not(HasSubstr("Not First Time")));
}

TEST_F(Desktop, WithoutNetworkItSaysSo) {
  startWithPanel();
  ASSERT_NO_FATAL_FAILURE(signIn());
  UserSession::setNetworkUp(false);
  ASSERT_TRUE(sees("label", "Network is not available.")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "OK"));
  ASSERT_TRUE(seesNoMore("label", "Network is not available."));
  UserSession::type({"super+F2"});
  ASSERT_TRUE(sees("label", "Google Assistant Alert")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "OK"));
  ASSERT_TRUE(seesNoMore("label", "Google Assistant Alert"));
  // The click opens the window, which will not listen.
  UserSession::clickIcon();
  ASSERT_TRUE(sees("label", "Alexa Alert")) << m_reader->text();
  ASSERT_TRUE(m_reader->press("push button", "OK"));
  ASSERT_TRUE(isAt("Talk"));
  UserSession::setNetworkUp(true);
  // The kernel finds the carrier a moment later.
  ASSERT_TRUE(eventually([] {
    return tests::run({"sh", "-c", "ip link show velmora0 | grep -q 'state UP'"});
  }));
  UserSession::type({"space"});
  EXPECT_TRUE(sees("label", "Listening…")) << m_reader->text();
}

TEST_F(Desktop, TheLocalAssistantComesBackAndNeverStaysBehind) {
  startWithPanel();
  ASSERT_NO_FATAL_FAILURE(signIn());
  const auto assistant = [&]() -> pid_t {
    for (const pid_t child : childrenOf(m_velmora->pid()))
      if (tests::nameOf(child) == "velmora-assista") return child;
    return 0;
  };
  const pid_t first = assistant();
  ASSERT_NE(first, 0);
  UserSession::clickIcon();
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  ASSERT_EQ(::kill(first, SIGKILL), 0);
  EXPECT_TRUE(isAt("Talk")) << m_reader->text();
  ASSERT_TRUE(eventually([&] { return assistant() != 0 && assistant() != first; }));
  ASSERT_TRUE(isAt("Talk"));
  UserSession::type({"space"});
  ASSERT_TRUE(sees("label", "Listening…")) << m_reader->text();
  say("01-what-time-is-it.wav");
  EXPECT_TRUE(sees("label", "\"What time is it\"")) << m_reader->text();
  const pid_t second = assistant();
  m_velmora->signal(SIGKILL);
  EXPECT_EQ(m_velmora->wait(), -1);
  EXPECT_TRUE(eventually([&] { return ::kill(second, 0) != 0; }));
}

TEST_F(Desktop, TheSpokenCommandOpensThePopover) {
  UserDefaults stored = defaults();
  stored.setObject(true, QStringLiteral("HotwordEnable"));
  ASSERT_TRUE(stored.synchronize());
  startWithPanel();
  ASSERT_NO_FATAL_FAILURE(signIn());
  hear(tests::joined(
      {tests::silence(2500), tests::spoken("okay mac", tests::Speaker::slt), tests::silence(1500)}));
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
  startWithPanel();
  ASSERT_TRUE(sees("label", "This is where Velmora is"));
  m_velmora->signal(SIGSEGV);
  EXPECT_EQ(m_velmora->wait(), -1);
  const auto reports = [this] {
    int count = 0;
    for (const auto &file : fs::recursive_directory_iterator(m_session->home() / "velmora" / "crashes"))
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
  m_session->startPanel();
  ASSERT_TRUE(sees("label", "This is where Velmora is")) << m_reader->text();
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  // Before all else: threads stay where they were.
  velmora::hasOwnNetwork = velmora::tests::UserSession::enterNetwork();
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
