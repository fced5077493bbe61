// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Takes the pictures of the README from the running application, one after the other of a first day's use.
//
//   velmora-pictures FOLDER
#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <thread>

#include "auth/TokenStore.h"
#include "support/AudioFiles.h"
#include "support/UserSession.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using tests::Program;
using tests::UserSession;

constexpr auto kMoment = 300ms;
constexpr auto kPage = 3s;  // until a page has been drawn
constexpr int kMargin = 24;

class Pictures {
 public:
  explicit Pictures(fs::path folder) : m_folder(std::move(folder)) {
    m_session.startPanel({"--transparent", "true", "--alpha", "0", "--tint", "0xf4f4f4"});
    m_velmora.emplace(VELMORA, std::vector<std::string>{}, UserSession::environment());
  }

  void take() {
    must([this] { return m_session.defaults().boolForKey(QStringLiteral("isFirstTime")); }, "no hint");
    std::this_thread::sleep_for(3 * kMoment);
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    save("hint", QRect(screen.width() - 420, 0, 420, 150));
    must([] { return largestWindow().width() < 100; }, "the hint stays");

    must(
        [] {
          UserSession::clickIcon();
          std::this_thread::sleep_for(kMoment);
          UserSession::type({"Down", "Return"});
          std::this_thread::sleep_for(3 * kMoment);
          return largestWindow().height() > 300;
        },
        "no sign-in");
    std::this_thread::sleep_for(kPage);
    saveWindow("sign-in");
    must(
        [this] {
          if (!isSignedIn()) UserSession::type({"Tab", "Return"});
          std::this_thread::sleep_for(3 * kMoment);
          return isSignedIn();
        },
        "not signed in");
    std::this_thread::sleep_for(kMoment);

    UserSession::clickIcon();
    ask("01-what-time-is-it.wav", "");
    ask("03-what-is-seven-plus-five.wav", "listening");
    ask("04-how-many-miles-is-ten-kilometers.wav", "");
    saveWindow("answer");
    UserSession::type({"Escape"});
    std::this_thread::sleep_for(kMoment);
    (void)Program(VELMORA, {"--preferences"}, UserSession::environment()).wait();
    std::this_thread::sleep_for(3 * kMoment);
    saveWindow("preferences");
    m_velmora->signal(SIGTERM);
  }

 private:
  static void must(const std::function<bool()> &condition, const char *what) {
    if (!tests::eventually(condition)) throw std::runtime_error(what);
  }
  [[nodiscard]] bool isSignedIn() const { return m_session.defaults().boolForKey(kLoggedInKey); }
  /// Waits until the log says so once more than before.
  void waitFor(const std::string &text, std::size_t &from) {
    must(
        [&] {
          QCoreApplication::processEvents();
          const auto found = m_velmora->out().find(text, from);
          if (found != std::string::npos) from = found + text.size();
          return found != std::string::npos;
        },
        text.c_str());
  }

  /// Asks while it listens, with a picture of that if it has a name, and waits until the answer is spoken.
  void ask(const char *question, const std::string &picture) {
    if (m_read > 0) UserSession::type({"space"});
    waitFor("audio listening..", m_read);
    std::this_thread::sleep_for(kPage);
    const auto samples = tests::readAudio(fs::path(VELMORA_QUESTIONS) / question).samples;
    std::thread speaker([&] { m_session.sound().say(samples, "mic", AudioSource::sampleRate); });
    std::this_thread::sleep_for(3 * kMoment);
    if (!picture.empty()) saveWindow(picture);
    speaker.join();
    waitFor("Result code ", m_read);
    std::this_thread::sleep_for(2 * kMoment);
    if (std::string(question).starts_with("04")) return;
    UserSession::type({"space"});  // it need not be heard to the end
    std::this_thread::sleep_for(kMoment);
  }

  /// The largest visible window of the session.
  static QRect largestWindow() {
    QProcess search;
    search.start(QStringLiteral("sh"),
                 {QStringLiteral("-c"),
                  QStringLiteral("for w in $(xdotool search --onlyvisible --class velmora); do "
                                 "xdotool getwindowgeometry --shell $w | tr '\\n' ' '; echo; done")});
    search.waitForFinished();
    QRect largest;
    for (const QByteArray &line : search.readAllStandardOutput().split('\n')) {
      int x = 0;
      int y = 0;
      int width = 0;
      int height = 0;
      if (std::sscanf(line.constData(), "WINDOW=%*d X=%d Y=%d WIDTH=%d HEIGHT=%d", &x, &y, &width, &height) !=
          4)
        continue;
      if (width * height > largest.width() * largest.height()) largest = QRect(x, y, width, height);
    }
    return largest;
  }
  void saveWindow(const std::string &name) {
    constexpr int kTitle = 24;
    save(name, largestWindow().adjusted(-kMargin, -kMargin - kTitle, kMargin, kMargin));
  }
  void save(const std::string &name, const QRect &wanted) {
    QScreen &screen = *QGuiApplication::primaryScreen();
    const QRect frame = wanted & screen.geometry();
    const fs::path file = m_folder / (name + ".png");
    const QPixmap picture = screen.grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height());
    if (!picture.save(QString::fromStdString(file.string()))) throw std::runtime_error(file.string());
    std::cout << "pictures: " << file.string() << '\n';
  }

  fs::path m_folder;
  std::size_t m_read = 0;  // bytes of the log
  UserSession m_session;
  std::optional<Program> m_velmora;
};

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  if (argc != 2) {
    std::cerr << "usage: velmora-pictures FOLDER\n";
    return 2;
  }
  return velmora::tests::runInSession<QGuiApplication>("pictures", argc, argv, [&] {
    velmora::Pictures(argv[1]).take();
    return 0;
  });
}
