// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <QStandardPaths>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <thread>

#include "foundation/Descriptor.h"
#include "platform/process/LineCollector.h"
#include "platform/process/WakePipe.h"

namespace velmora {
namespace {

constexpr std::size_t kLongestFirstLine = 65536;
constexpr std::chrono::seconds kStopLimit{2};

struct Pipe {
  Descriptor reader;
  Descriptor writer;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  // Nothing of it may leak into other children: a copy of the writing end would keep this one alive.
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::vector<char *> pointers(std::vector<std::string> &texts) {
  std::vector<char *> result;
  result.reserve(texts.size() + 1);
  for (std::string &text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environmentWith(const std::vector<std::pair<std::string, std::string>> &added) {
  std::vector<std::string> all;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const std::string_view name = text.substr(0, text.find('='));
    const bool replaced =
        std::any_of(added.begin(), added.end(), [&](const auto &pair) { return pair.first == name; });
    if (!replaced) all.emplace_back(text);
  }
  for (const auto &[name, value] : added) all.push_back(std::string(name).append("=").append(value));
  return all;
}

/// What the child inherits: our environment and the given ends as its standard streams, and none of our
/// signal dispositions, descriptors and keyboard signals.
pid_t spawn(const ChildProcess::Setup &setup, int in, int out, int error) {
  std::vector<std::string> arguments{setup.program.string()};
  arguments.insert(arguments.end(), setup.arguments.begin(), setup.arguments.end());
  std::vector<std::string> environment = environmentWith(setup.environment);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  for (const int signal : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGXFSZ}) sigaddset(&signals, signal);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

  pid_t pid = -1;
  const int failure = ::posix_spawn(&pid, setup.program.c_str(), &actions, &attributes,
                                    pointers(arguments).data(), pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::system_error(failure, std::generic_category(), setup.program.string());
  return pid;
}

/// Milliseconds for poll(2), rounded up so that a wait never spins at its end.
int millisecondsUntil(ChildProcess::Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - ChildProcess::Clock::now());
  return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1'000'000'000));
}

}  // namespace

class ChildProcess::Running {
 public:
  explicit Running(Setup setup) : m_errors(std::move(setup.errorLine)) {
    Pipe in = makePipe();
    Pipe out = makePipe();
    Pipe error = makePipe();
    m_pid = spawn(setup, in.reader.number(), out.writer.number(), error.writer.number());
    // Directly: glibc 2.36 declares pidfd_open for C only.
    m_exit = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0)));
    m_input = std::move(in.writer);
    m_output = std::move(out.reader);
    m_error = std::move(error.reader);
    ::fcntl(m_output.number(), F_SETFL, O_NONBLOCK);
    ::fcntl(m_error.number(), F_SETFL, O_NONBLOCK);
    m_drain = std::thread([this] { drain(); });
  }

  ~Running() { stop(kStopLimit); }
  Running(const Running &) = delete;
  Running &operator=(const Running &) = delete;

  Wait readFirstLine(std::string &line, Clock::time_point deadline, int wakeDescriptor) {
    const Wait result = waitForLine(line, deadline, wakeDescriptor);
    m_dropOutput = true;
    m_wake.wake();
    return result;
  }

  /// Waits for the end and reaps.
  bool endsWithin(std::chrono::milliseconds limit, int wakeDescriptor = -1) {
    const auto deadline = Clock::now() + limit;
    while (!m_reaped) {
      const pid_t reaped = ::waitpid(m_pid, &m_status, WNOHANG);
      m_reaped = reaped == m_pid || (reaped < 0 && errno == ECHILD);
      if (m_reaped || Clock::now() >= deadline) break;
      std::array<pollfd, 2> watched{pollfd{.fd = m_exit.number(), .events = POLLIN, .revents = 0},
                                    pollfd{.fd = wakeDescriptor, .events = POLLIN, .revents = 0}};
      // Without a descriptor of the process (kernels that refuse one) look again and again.
      constexpr int kLookEvery = 10;
      const int left = millisecondsUntil(deadline);
      ::poll(watched.data(), watched.size(), m_exit.number() < 0 ? std::min(left, kLookEvery) : left);
      if (watched[1].revents != 0) break;
    }
    return m_reaped;
  }

  void stop(std::chrono::milliseconds limit) {
    if (!m_drain.joinable()) return;
    m_input.close();
    if (!m_reaped) ::kill(m_pid, SIGTERM);
    if (!endsWithin(limit)) {
      ::kill(m_pid, SIGKILL);
      while (::waitpid(m_pid, &m_status, 0) < 0 && errno == EINTR) {
      }
      m_reaped = true;
    }
    // All that the child wrote is in the pipes now; a grandchild may hold them open for ever.
    m_ended = true;
    m_wake.wake();
    m_drain.join();
  }

  [[nodiscard]] std::string ending() const {
    if (!m_reaped) return {};
    if (WIFSIGNALED(m_status)) return "was ended by signal " + std::to_string(WTERMSIG(m_status));
    return "ended with exit code " + std::to_string(WEXITSTATUS(m_status));
  }

  [[nodiscard]] std::string lastErrorLine() const { return m_errors.last(); }

 private:
  Wait waitForLine(std::string &line, Clock::time_point deadline, int wakeDescriptor) {
    line.clear();
    for (;;) {
      std::array<pollfd, 3> watched{pollfd{.fd = m_output.number(), .events = POLLIN, .revents = 0},
                                    pollfd{.fd = wakeDescriptor, .events = POLLIN, .revents = 0},
                                    pollfd{.fd = m_exit.number(), .events = POLLIN, .revents = 0}};
      const int ready = ::poll(watched.data(), watched.size(), millisecondsUntil(deadline));
      if (watched[1].revents != 0) return Wait::woken;
      if (ready == 0) return Wait::timedOut;
      if (ready < 0) continue;
      const bool more = readOutput(line);
      const bool over = !more && (m_outputEnded || watched[2].revents != 0);
      if (const std::size_t end = line.find('\n'); end != std::string::npos) {
        line.resize(end);
        return Wait::line;
      }
      if (line.size() > kLongestFirstLine) return Wait::tooLong;
      if (over) return Wait::closed;
    }
  }

  /// Appends what is there; false when that is nothing.
  bool readOutput(std::string &text) {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(m_output.number(), bytes.data(), bytes.size());
    if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
    m_outputEnded = count == 0;
    return count > 0;
  }

  /// Reads all that `source` has now and closes it at its end.
  template <typename Take>
  static void empty(Descriptor &source, Take take) {
    std::array<char, 4096> bytes{};
    while (source.number() >= 0) {
      const ssize_t count = ::read(source.number(), bytes.data(), bytes.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0 && errno == EAGAIN) return;
      if (count <= 0) return source.close();
      take(std::string_view(bytes.data(), static_cast<std::size_t>(count)));
    }
  }

  /// The thread that reads what the child says, until `stop()`.
  void drain() {
    for (;;) {
      const bool last = m_ended;
      empty(m_error, [this](std::string_view bytes) { m_errors.add(bytes); });
      if (m_dropOutput) empty(m_output, [](std::string_view) {});
      if (last) return m_errors.finish();
      std::array<pollfd, 3> watched{
          pollfd{.fd = m_wake.descriptor(), .events = POLLIN, .revents = 0},
          pollfd{.fd = m_error.number(), .events = POLLIN, .revents = 0},
          pollfd{.fd = m_dropOutput ? m_output.number() : -1, .events = POLLIN, .revents = 0}};
      ::poll(watched.data(), watched.size(), -1);
      if (watched[0].revents != 0) m_wake.waitUntil(Clock::now());
    }
  }

  pid_t m_pid = -1;
  int m_status = 0;  // valid once reaped
  bool m_reaped = false;
  Descriptor m_exit;   // readable when the child has ended; none where the kernel refuses
  Descriptor m_input;  // held, never written to
  Descriptor m_output;
  bool m_outputEnded = false;
  Descriptor m_error;
  LineCollector m_errors;
  WakePipe m_wake;
  std::atomic<bool> m_dropOutput{false};
  std::atomic<bool> m_ended{false};
  std::thread m_drain;
};

std::optional<std::filesystem::path> findProgram(const std::string &name) {
  std::error_code ignored;
  const auto own = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
  const QString wanted = QString::fromStdString(name);
  QString found = QStandardPaths::findExecutable(wanted, {QString::fromStdString(own.string())});
  if (found.isEmpty()) found = QStandardPaths::findExecutable(wanted);
  if (found.isEmpty()) return std::nullopt;
  return found.toStdString();
}

ChildProcess::ChildProcess(Setup setup) : m_running(std::make_unique<Running>(std::move(setup))) {}

ChildProcess::~ChildProcess() = default;

ChildProcess::Wait ChildProcess::readFirstLine(std::string &line, Clock::time_point deadline,
                                               int wakeDescriptor) {
  return m_running->readFirstLine(line, deadline, wakeDescriptor);
}

bool ChildProcess::endsWithin(std::chrono::milliseconds limit, int wakeDescriptor) {
  return m_running->endsWithin(limit, wakeDescriptor);
}

void ChildProcess::stop(std::chrono::milliseconds limit) { m_running->stop(limit); }

std::string ChildProcess::ending() const { return m_running->ending(); }

std::string ChildProcess::lastErrorLine() const { return m_running->lastErrorLine(); }

}  // namespace velmora
