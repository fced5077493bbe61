// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A long day of the application in fast motion: turns by click and key, answers silenced, signing out and in,
// and every accident of network, sound and service in between. Fails when memory grows after the first turns,
// or a thread, a descriptor or a child is left over.
//
//   velmora-soak TURNS [ACCIDENT]     before every turn the accident of that number alone, to look into it
#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <thread>

#include "auth/TokenStore.h"
#include "platform/audio/AudioFile.h"
#include "support/OtherProgram.h"
#include "support/UserSession.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using tests::eventually;
using tests::ProcessFigures;
using tests::Program;
using tests::UserSession;

constexpr int kWarm = 20;           // turns, after which nothing may grow
constexpr int kRound = 25;          // turns, in which everything happens once
constexpr int kLook = 10;           // turns between two rows of the table
constexpr long kMostGrowth = 6000;  // KiB; what an allocator may take without giving it back
constexpr auto kMoment = 300ms;

class Soak {
 public:
  explicit Soak(int turns, int accident) : m_turns(turns), m_accident(accident) {
    for (const auto &file : fs::directory_iterator(VELMORA_QUESTIONS))
      if (file.path().extension() == ".wav") m_questions.push_back(file.path());
    std::sort(m_questions.begin(), m_questions.end());
  }

  int run() {
    m_session.startPanel();
    m_velmora.emplace(VELMORA, std::vector<std::string>{}, UserSession::environment());
    std::this_thread::sleep_for(1s);
    signIn();
    std::printf("%6s %9s %9s %9s %8s %12s %9s\n", "turns", "Pss, KiB", "Rss, KiB", "own, KiB", "threads",
                "descriptors", "children");
    for (m_turn = 1; m_turn <= m_turns; ++m_turn) {
      accident(m_accident > 0 ? m_accident : m_turn % kRound);
      turn();
      if (m_turn % kLook == 0 || m_turn == m_turns) look();
    }
    const bool isWell = judge();
    const auto children = tests::childrenOf(m_velmora->pid());
    m_velmora->signal(SIGTERM);
    if (m_velmora->wait() != 0) throw std::runtime_error("it ended badly");
    for (const pid_t child : children) must([&] { return ::kill(child, 0) != 0; }, "a child is left");
    std::printf("soak: %d turns, %d requests understood, %d turns failed\n", m_turns, m_understood, m_failed);
    return isWell && m_failed == 0 ? 0 : 1;
  }

 private:
  void must(const std::function<bool()> &condition, const char *what) {
    if (eventually(condition)) return;
    throw std::runtime_error(std::string(what) + ", in turn " + std::to_string(m_turn));
  }
  /// How often the log has said so.
  int logged(const std::string &text) {
    QCoreApplication::processEvents();  // reads what it wrote
    const std::string &all = m_velmora->out();
    int count = 0;
    for (auto at = all.find(text); at != std::string::npos; at = all.find(text, at + 1)) ++count;
    return count;
  }
  bool waitFor(const std::string &text, int count, std::chrono::milliseconds limit) {
    for (const auto end = std::chrono::steady_clock::now() + limit; logged(text) < count;) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(20ms);
      if (::kill(m_velmora->pid(), 0) != 0) throw std::runtime_error("it is gone");
    }
    return true;
  }
  [[nodiscard]] bool isSignedIn() const { return m_session.defaults().boolForKey(kLoggedInKey); }
  static bool isWindowShown(const char *title) {
    return tests::run(
        {"sh", "-c", std::string("xdotool search --onlyvisible --name '") + title + "' >/dev/null 2>&1"});
  }
  bool isSpeaking() { return !m_session.sound().control({"list", "short", "sink-inputs"}).empty(); }

  void signIn() {
    must(
        [] {
          if (isWindowShown("Sign in to Velmora")) return true;
          UserSession::clickIcon();
          std::this_thread::sleep_for(kMoment);
          UserSession::type({"Down", "Return"});
          std::this_thread::sleep_for(2 * kMoment);
          return false;
        },
        "no sign-in");
    must(
        [this] {
          std::this_thread::sleep_for(3 * kMoment);
          if (!isSignedIn()) UserSession::type({"Tab", "Return"});
          std::this_thread::sleep_for(2 * kMoment);
          return isSignedIn();
        },
        "not signed in");
    must([] { return !isWindowShown("Sign in to Velmora"); }, "the sign-in stays");
    m_isOpen = false;
  }
  void signOut() {
    close();
    must(
        [this] {
          UserSession::clickIcon(3);
          std::this_thread::sleep_for(kMoment);
          UserSession::type({"Down", "Down", "Down", "Down", "Return"});
          std::this_thread::sleep_for(kMoment);
          return !isSignedIn();
        },
        "not signed out");
  }

  void open() {
    if (m_isOpen) return;
    UserSession::clickIcon();
    m_isOpen = true;
  }
  void close() {
    if (!m_isOpen) return;
    UserSession::clickIcon();
    m_isOpen = false;
    std::this_thread::sleep_for(kMoment);
    interrupted();
  }
  /// A question back that had opened the microphone is not asked any more.
  void interrupted() { m_listened = logged("audio listening.."); }
  /// Says yes to whatever message has come.
  static void dismiss() {
    std::this_thread::sleep_for(3 * kMoment);
    UserSession::type({"Return"});
    std::this_thread::sleep_for(kMoment);
  }

  /// What happens before the turn of this number in a round.
  void accident(int number) {
    switch (number) {
      case 5:
        close();
        UserSession::setNetworkUp(false);
        dismiss();
        UserSession::setNetworkUp(true);
        std::this_thread::sleep_for(kMoment);
        break;
      case 9:
        m_session.sound().kill();
        m_session.sound().start();
        std::this_thread::sleep_for(1500ms);  // it looks for a server once a second
        break;
      case 13:
        close();
        m_session.sound().unplugMicrophone("mic");
        std::this_thread::sleep_for(kMoment);
        UserSession::clickIcon();
        dismiss();
        m_session.sound().plugMicrophone("mic");
        m_session.sound().setDefaultMicrophone("mic");
        std::this_thread::sleep_for(kMoment);
        break;
      case 17: {
        const pid_t first = assistant();
        ::kill(first, SIGKILL);
        must([&] { return assistant() != 0 && assistant() != first; }, "no assistant");
        std::this_thread::sleep_for(2s);  // it reads its dictionary
        interrupted();
        break;
      }
      case 21:
        signOut();
        signIn();
        break;
      default: break;
    }
  }
  [[nodiscard]] pid_t assistant() const {
    for (const pid_t child : tests::childrenOf(m_velmora->pid()))
      if (tests::nameOf(child) == "velmora-assista") return child;
    return 0;
  }

  void turn() {
    // A question back has opened the microphone already.
    if (logged("audio listening..") == m_listened) {
      if (m_turn % 3 == 0) close();
      if (m_isOpen) {
        UserSession::type({"space"});
      } else {
        open();
      }
      if (!waitFor("audio listening..", m_listened + 1, 10s)) return failed("it does not listen");
    }
    m_listened = logged("audio listening..");
    const int requests = logged("Request text: ");
    const int results = logged("Result code ");
    AudioFile file(m_questions[static_cast<std::size_t>(m_turn) % m_questions.size()]);
    std::vector<std::int16_t> samples(static_cast<std::size_t>(10 * AudioSource::sampleRate));
    samples.resize(file.read(samples).samples);
    m_session.sound().say(samples, "mic", AudioSource::sampleRate);
    if (!waitFor("Result code ", results + 1, 20s)) return failed("no answer");
    if (logged("Request text: ") > requests) ++m_understood;
    // The answer is heard a moment after the service has ended the turn.
    for (int i = 0; i < 10 && !isSpeaking(); ++i) std::this_thread::sleep_for(100ms);
    if (m_turn % 4 == 0 && isSpeaking()) UserSession::type({"space"});
    must(
        [this] {
          std::this_thread::sleep_for(100ms);
          return !isSpeaking();
        },
        "it does not end to speak");
    std::this_thread::sleep_for(kMoment);
  }
  void failed(const char *why) {
    ++m_failed;
    std::cerr << "soak: turn " << m_turn << ": " << why << '\n';
    const std::string &all = m_velmora->out();
    std::cerr << all.substr(all.size() - std::min<std::size_t>(all.size(), 600)) << m_velmora->err();
    // From the beginning: whatever was open is closed by a key, and what it knew of that by a click.
    UserSession::type({"Escape"});
    std::this_thread::sleep_for(3 * kMoment);
    m_listened = logged("audio listening..");
    UserSession::clickIcon();
    m_isOpen = waitFor("audio listening..", m_listened + 1, 3s);
    close();
    std::this_thread::sleep_for(1s);
    m_listened = logged("audio listening..");
  }

  void look() {
    close();
    // What a closed window frees takes a moment.
    std::this_thread::sleep_for(3s);
    const auto now = ProcessFigures::of(m_velmora->pid());
    m_figures[m_turn] = now;
    std::printf("%6d %9ld %9ld %9ld %8ld %12ld %9ld\n", m_turn, now.proportional, now.resident, now.own,
                now.threads, now.descriptors, now.children);
    m_listened = logged("audio listening..");
  }
  /// The first third after the first turns against the last rows. Libraries have threads that come and go:
  /// left over is what is there in each of the last rows and was in none of the first.
  bool judge() {
    const auto begin = m_figures.lower_bound(kWarm);
    if (begin == m_figures.end()) return true;
    const auto end = m_figures.upper_bound(std::max(begin->first, m_turns / 3));
    const auto last =
        std::prev(m_figures.end(), std::min<std::ptrdiff_t>(3, std::distance(begin, m_figures.end())));
    bool isWell = true;
    const auto complain = [&](bool grew, const char *what) {
      if (!grew) return;
      isWell = false;
      std::cerr << "soak: " << what << '\n';
    };
    const auto isLeft = [&](long ProcessFigures::*count) {
      const auto fewer = [count](const auto &a, const auto &b) { return a.second.*count < b.second.*count; };
      return std::min_element(last, m_figures.end(), fewer)->second.*count >
             std::max_element(begin, end, fewer)->second.*count;
    };
    complain(m_figures.rbegin()->second.own - begin->second.own > kMostGrowth, "memory grew");
    complain(isLeft(&ProcessFigures::threads), "threads are left over");
    complain(isLeft(&ProcessFigures::descriptors), "descriptors are left over");
    complain(isLeft(&ProcessFigures::children), "children are left over");
    return isWell;
  }

  const int m_turns;
  const int m_accident;  // 0: each in its turn
  int m_turn = 0;
  int m_understood = 0;
  int m_failed = 0;
  int m_listened = 0;  // how often it has said so
  bool m_isOpen = false;
  std::vector<fs::path> m_questions;
  std::map<int, ProcessFigures> m_figures;  // by turn
  UserSession m_session;
  std::optional<Program> m_velmora;
};

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  const auto number = [&](int index, int otherwise) {
    return argc > index ? std::max(1, std::atoi(argv[index])) : otherwise;
  };
  return velmora::tests::runInSession<QCoreApplication>(
      "soak", argc, argv, [&] { return velmora::Soak(number(1, 200), number(2, 0)).run(); });
}
