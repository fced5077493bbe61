// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the application in the status bar costs its user, beside the least that could be there: how soon its
// icon is in the panel, what it takes while nothing is opened, how soon a click is heard as speech and an
// answer as sound, and what it does while nobody asks anything of it. Programs run in a session of their own
// with a real panel and a real sound server.
//
//   bench_start [SECONDS [start|turns|idle]]        of idleness, 60 by default; one part only
#include <fcntl.h>
#include <sys/wait.h>
#include <xcb/xcb.h>

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <numbers>
#include <thread>

#include "auth/TokenStore.h"
#include "protocol/ConverseRequest.h"
#include "protocol/ConverseResponse.h"
#include "support/Mp3.h"
#include "support/OtherProgram.h"
#include "support/ScriptedServer.h"
#include "support/UserSession.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using tests::eventually;
using tests::ProcessFigures;
using tests::Program;
using tests::ScriptedServer;
using tests::UserSession;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kStarts = 10;
constexpr int kTurns = 10;
constexpr auto kToSettle = 3s;
constexpr auto kAfterUse = 65s;
constexpr double kClickDelay = 200;  // ms between the click and the microphone, as it is meant to be

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values.empty() ? NAN : values[values.size() / 2];
}

struct Freed {
  void operator()(void *held) const { std::free(held); }
};

/// Sees when a panel takes an icon.
class PanelWatch {
 public:
  PanelWatch() : m_connection(xcb_connect(nullptr, nullptr)) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection, root, XCB_CW_EVENT_MASK, &events);
    const std::string name = "_XEMBED_INFO";
    const std::unique_ptr<xcb_intern_atom_reply_t, Freed> atom(xcb_intern_atom_reply(
        m_connection, xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    if (!atom) throw std::runtime_error("no display");
    m_info = atom->atom;
  }
  ~PanelWatch() { xcb_disconnect(m_connection); }
  PanelWatch(const PanelWatch &) = delete;
  PanelWatch &operator=(const PanelWatch &) = delete;

  /// Waits until a window that is made to be embedded is put into another one.
  Clock::time_point waitForIcon() {
    const auto end = Clock::now() + tests::kPatience;
    while (Clock::now() < end) {
      const std::unique_ptr<xcb_generic_event_t, Freed> event(xcb_poll_for_event(m_connection));
      if (!event) {
        std::this_thread::sleep_for(100us);
        continue;
      }
      const auto now = Clock::now();
      if ((event->response_type & 0x7f) != XCB_REPARENT_NOTIFY) continue;
      const auto window = reinterpret_cast<const xcb_reparent_notify_event_t *>(event.get())->window;
      const std::unique_ptr<xcb_get_property_reply_t, Freed> property(xcb_get_property_reply(
          m_connection, xcb_get_property(m_connection, 0, window, m_info, XCB_ATOM_ANY, 0, 2), nullptr));
      if (property && property->value_len > 0) return now;
    }
    throw std::runtime_error("no icon came into the panel");
  }
  void forget() {
    synchronize();
    while (const std::unique_ptr<xcb_generic_event_t, Freed> event{xcb_poll_for_event(m_connection)}) {
    }
  }

 private:
  void synchronize() {
    const std::unique_ptr<xcb_get_input_focus_reply_t, Freed> done(
        xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
  }

  xcb_connection_t *m_connection;
  xcb_atom_t m_info = XCB_NONE;
};

void end(Program &program) {
  program.signal(SIGTERM);
  program.wait();
}

/// The heading of a table, and its rows: ours, the bare one, the quotient.
void heading(const char *what) {
  std::printf("%-44s %9s %9s %8s %9s\n", what, "velmora", "bare", "ratio", "aim");
}
void row(const char *name, double ours, double bare, const char *aim) {
  std::printf("%-44s %9.1f %9.1f %8.2f %9s\n", name, ours, bare, ours / bare, aim);
}

// Start and memory.

struct StartFigures {
  std::vector<double> icon;  // ms
  std::vector<double> proportional, resident;
  std::vector<double> assistant;  // memory of the child
};

void measureStart(PanelWatch &panel, const char *program, StartFigures &figures, bool withMemory) {
  panel.forget();
  const auto begin = Clock::now();
  Program started(program, {}, UserSession::environment());
  figures.icon.push_back(Milliseconds(panel.waitForIcon() - begin).count());
  if (withMemory) {
    std::this_thread::sleep_for(kToSettle);
    const auto now = ProcessFigures::of(started.pid());
    figures.proportional.push_back(static_cast<double>(now.proportional) / 1024);
    figures.resident.push_back(static_cast<double>(now.resident) / 1024);
    for (const pid_t child : tests::childrenOf(started.pid()))
      figures.assistant.push_back(static_cast<double>(ProcessFigures::of(child).proportional) / 1024);
  }
  end(started);
}

void reportStart() {
  PanelWatch panel;
  StartFigures ours;
  StartFigures bare;
  StartFigures warmUp;
  measureStart(panel, VELMORA, warmUp, false);
  measureStart(panel, VELMORA_TRAY_PROGRAM, warmUp, false);
  for (int i = 0; i < kStarts; ++i) {
    measureStart(panel, VELMORA, ours, i < 3);
    measureStart(panel, VELMORA_TRAY_PROGRAM, bare, i < 3);
  }
  heading("start, and nothing opened");
  row("start to icon in the panel, ms", median(ours.icon), median(bare.icon), "1.50");
  row("memory, shared pages divided (Pss), MiB", median(ours.proportional), median(bare.proportional),
      "1.50");
  row("memory, resident (Rss), MiB", median(ours.resident), median(bare.resident), "1.50");
  std::printf("%-44s %9.1f\n\n", "  and of the local assistant, Pss, MiB", median(ours.assistant));
}

// Turns.

/// What comes out of a program that records, and when.
class Recorder {
 public:
  Recorder(const std::string &device, int milliseconds) {
    const std::string command = "exec parec --raw --format=s16le --rate=44100 --channels=1 --latency-msec=" +
                                std::to_string(milliseconds) + " --device=" + device;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    m_pid = ::fork();
    if (m_pid == 0) {
      ::dup2(ends[1], STDOUT_FILENO);
      ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      std::_Exit(1);
    }
    ::close(ends[1]);
    m_reader = std::thread([this, descriptor = ends[0]] { read(descriptor); });
  }
  ~Recorder() {
    ::kill(m_pid, SIGTERM);
    ::waitpid(m_pid, nullptr, 0);
    m_reader.join();
  }
  Recorder(const Recorder &) = delete;
  Recorder &operator=(const Recorder &) = delete;

  /// When so many samples had come.
  Clock::time_point waitForCount(std::size_t count) {
    return wait([&](std::size_t, std::size_t total) { return total >= count; });
  }
  /// When the first sound came that is no silence, of what comes from now on.
  Clock::time_point waitForSound() {
    return wait([](std::size_t sounds, std::size_t) { return sounds > 0; });
  }
  /// From now on; after a moment of silence.
  void begin() {
    std::unique_lock lock(m_mutex);
    do {
      m_sounds = 0;
      m_changed.wait_for(lock, 200ms, [this] { return m_sounds > 0; });
    } while (m_sounds > 0);
  }

 private:
  template <typename Condition>
  Clock::time_point wait(const Condition &condition) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, tests::kPatience, [&] { return condition(m_sounds, m_total); }))
      throw std::runtime_error("no sound came");
    return m_when;
  }
  void read(int descriptor) {
    std::vector<std::int16_t> piece(4096);
    for (;;) {
      const ssize_t count = ::read(descriptor, piece.data(), piece.size() * 2);
      if (count <= 0) break;
      const std::lock_guard lock(m_mutex);
      const auto samples = static_cast<std::size_t>(count) / 2;
      m_total += samples;
      if (m_sounds == 0) m_when = Clock::now();
      m_sounds += static_cast<std::size_t>(
          std::count_if(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(samples),
                        [](std::int16_t sample) { return std::abs(sample) > 16; }));
      m_changed.notify_all();
    }
    ::close(descriptor);
  }

  pid_t m_pid = -1;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  Clock::time_point m_when;
  std::size_t m_total = 0;
  std::size_t m_sounds = 0;
  std::thread m_reader;
};

std::vector<std::int16_t> tone() {
  std::vector<std::int16_t> samples(22050);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<std::int16_t>(
        8000 * std::cos(2 * std::numbers::pi * 440 * static_cast<double>(i) / 44100));
  return samples;
}

using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;

std::string soundResponse(const std::string &mp3) {
  Google_Assistant_Embedded_V1alpha1_AudioOut out;
  out.setAudioData(mp3);
  Response response;
  response.setAudioOut(out);
  return response.serialize();
}

/// A service that answers each turn when it is told to.
class Service {
 public:
  Service() : m_server([this](ScriptedServer::Call &call) { return turn(call); }) {
    const std::string mp3 = tests::encodeMp3(tone());
    m_firstHalf = soundResponse(mp3.substr(0, mp3.size() / 2));
    m_lastHalf = soundResponse(mp3.substr(mp3.size() / 2));
    (void)m_folder.write("roots.pem", m_server.roots());
    (void)m_folder.write("deployment.json", R"({"host": "127.0.0.1", "port": )" +
                                                std::to_string(*m_server.deployment().port) + "}");
    (void)m_folder.write("google_oauth2.json", "{}");
  }
  [[nodiscard]] std::string deployment() const { return m_folder.path().string(); }
  /// When the first sound of the next turn came.
  Clock::time_point waitForAudio() { return take(m_firstAudio); }
  /// Answers; when the last byte was given away.
  Clock::time_point answer() {
    {
      const std::lock_guard lock(m_mutex);
      ++m_answers;
      m_changed.notify_all();
    }
    return take(m_lastByte);
  }

 private:
  ScriptedServer::End turn(ScriptedServer::Call &call) {
    while (const auto bytes = call.read()) {
      const auto request = Google_Assistant_Embedded_V1alpha1_ConverseRequest::parse(*bytes);
      if (request.audioIn().empty()) continue;
      put(m_firstAudio);
      break;
    }
    {
      std::unique_lock lock(m_mutex);
      m_changed.wait_for(lock, tests::kPatience, [this] { return m_answers > 0; });
      --m_answers;
    }
    Response over;
    over.setEventType(Response::EventType::endOfUtterance);
    call.write(over.serialize());
    call.readAll();
    call.write(m_firstHalf);
    std::this_thread::sleep_for(50ms);
    put(m_lastByte);
    call.write(m_lastHalf);
    return {};
  }
  void put(std::deque<Clock::time_point> &times) {
    const std::lock_guard lock(m_mutex);
    times.push_back(Clock::now());
    m_changed.notify_all();
  }
  Clock::time_point take(std::deque<Clock::time_point> &times) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, tests::kPatience, [&] { return !times.empty(); }))
      throw std::runtime_error("the turn does not go on");
    const auto first = times.front();
    times.pop_front();
    return first;
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<Clock::time_point> m_firstAudio;
  std::deque<Clock::time_point> m_lastByte;
  int m_answers = 0;
  std::string m_firstHalf;
  std::string m_lastHalf;
  tests::TemporaryFolder m_folder;
  ScriptedServer m_server;
};

void signIn(const UserSession &session) {
  UserDefaults defaults = session.defaults();
  defaults.setObject(true, QStringLiteral("isFirstTime"));
  defaults.setObject(true, kLoggedInKey);
  defaults.setObject(QStringLiteral("token"), kAuthTokenKey);
  defaults.setObject(QStringLiteral("refresh"), kRefreshTokenKey);
  defaults.setObject(QDateTime::currentDateTimeUtc().addDays(1), kExpiresInKey);
  defaults.synchronize();
}

void reportTurns(UserSession &session) {
  // What the sound server itself takes: to the first tenth of a second, and to be heard.
  std::vector<double> bareSound;
  std::vector<double> bareHearing;
  for (int i = 0; i < kTurns; ++i) {
    const auto begin = Clock::now();
    Recorder microphone("mic", 100);
    bareSound.push_back(Milliseconds(microphone.waitForCount(4410) - begin).count());
  }
  const auto loudspeaker = std::make_unique<Recorder>("spk.monitor", 10);
  loudspeaker->waitForCount(4410);
  const fs::path file = session.home() / "tone.raw";
  {
    const auto samples = tone();
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char *>(samples.data()),
               static_cast<std::streamsize>(samples.size() * 2));
  }
  for (int i = 0; i < kTurns; ++i) {
    loudspeaker->begin();
    const auto begin = Clock::now();
    Program player("pacat",
                   {"--playback", "--raw", "--format=s16le", "--rate=44100", "--channels=1",
                    "--latency-msec=20", "--device=spk", file.string()},
                   {});
    bareHearing.push_back(Milliseconds(loudspeaker->waitForSound() - begin).count());
    player.wait();
  }

  Service service;
  signIn(session);
  PanelWatch panel;
  Program velmora(VELMORA, {"--deployment", service.deployment()}, UserSession::environment());
  panel.waitForIcon();
  std::this_thread::sleep_for(kToSettle);
  (void)tests::xdotool({"mousemove", "1268", "12"});
  std::vector<double> sound;
  std::vector<double> hearing;
  for (int i = 0; i <= kTurns; ++i) {
    const auto click = Clock::now();
    UserSession::clickIcon();
    sound.push_back(Milliseconds(service.waitForAudio() - click).count() - kClickDelay);
    loudspeaker->begin();  // the sound that says "go ahead" is over
    const auto lastByte = service.answer();
    hearing.push_back(Milliseconds(loudspeaker->waitForSound() - lastByte).count());
    loudspeaker->begin();
    UserSession::clickIcon();  // closes
    std::this_thread::sleep_for(500ms);
  }
  heading("a turn");
  const double first = sound.front();
  sound.erase(sound.begin());
  row("click to 100 ms of speech at the service, ms", median(sound), median(bareSound), "+ 50 ms");
  row("  of the first click, which opens the window", first, median(bareSound), "");
  row("last byte of the answer to sound, ms", median(hearing), median(bareHearing), "50 ms");
  std::printf(
      "  bare: parec from its start to its first 100 ms; pacat from its start to its first sound\n\n");
  end(velmora);
}

// Nothing to do.

struct ThreadFigures {
  std::string name;
  long wakeUps = 0;
  double milliseconds = 0;
};

std::map<std::string, ThreadFigures> threadsOf(pid_t process) {
  std::map<std::string, ThreadFigures> all;
  for (const auto &thread : fs::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    ThreadFigures figures;
    std::ifstream status(thread.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("Name:")) figures.name = line.substr(6);
      if (line.starts_with("voluntary_ctxt_switches:")) figures.wakeUps = std::stol(line.substr(24));
    }
    double nanoseconds = 0;
    std::ifstream(thread.path() / "schedstat") >> nanoseconds;
    figures.milliseconds = nanoseconds / 1e6;
    all[thread.path().filename()] = figures;
  }
  return all;
}

void reportIdle(const char *what, pid_t process, int seconds) {
  const auto before = threadsOf(process);
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const auto after = threadsOf(process);
  double wakeUps = 0;
  double milliseconds = 0;
  std::printf("%-44s %9s %9s\n", what, "wakes/s", "CPU %");
  for (const auto &[id, now] : after) {
    const auto found = before.find(id);
    const ThreadFigures then = found == before.end() ? ThreadFigures{} : found->second;
    const double wakes = double(now.wakeUps - then.wakeUps) / seconds;
    const double time = now.milliseconds - then.milliseconds;
    wakeUps += wakes;
    milliseconds += time;
    if (wakes > 0.05) std::printf("  %-42s %9.2f %9.3f\n", now.name.c_str(), wakes, time / (10.0 * seconds));
  }
  std::printf("  %-42s %9.2f %9.3f\n", ("all " + std::to_string(after.size()) + " threads").c_str(), wakeUps,
              milliseconds / (10.0 * seconds));
}

void reportIdleness(const UserSession &session, int seconds) {
  Service service;
  signIn(session);
  PanelWatch panel;
  Program velmora(VELMORA, {"--deployment", service.deployment()}, UserSession::environment());
  panel.waitForIcon();
  std::this_thread::sleep_for(kToSettle);
  reportIdle("idle, signed in, never opened (aim 2, 0.1)", velmora.pid(), seconds);
  UserSession::clickIcon();
  service.waitForAudio();
  service.answer();
  std::this_thread::sleep_for(kToSettle);
  UserSession::clickIcon();
  std::this_thread::sleep_for(kAfterUse);
  reportIdle("idle, a minute after a turn (aim 2, 0.1)", velmora.pid(), seconds);
  end(velmora);
}

int run(int seconds, const std::string &part) {
  UserSession session;
  {
    // No hint in the way.
    UserDefaults defaults = session.defaults();
    defaults.setObject(true, QStringLiteral("isFirstTime"));
    defaults.synchronize();
  }
  session.startPanel();
  std::this_thread::sleep_for(kToSettle);
  if (part.empty() || part == "start") reportStart();
  if (part.empty() || part == "turns") reportTurns(session);
  if (part.empty() || part == "idle") reportIdleness(session, seconds);
  return 0;
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
  return velmora::tests::runInSession<QCoreApplication>(
      "bench_start", argc, argv, [&] { return velmora::run(seconds, argc > 2 ? argv[2] : ""); });
}
