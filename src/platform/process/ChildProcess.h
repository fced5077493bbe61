// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A program that serves this one: it is started with a pipe as its standard input that is never written to,
// and whose end tells it that we are gone, however we went.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// The file to run for a program's name: beside the running executable, else in PATH.
[[nodiscard]] std::optional<std::filesystem::path> findProgram(const std::string &name);

/// A running child. Its output is read all the time, so that it never waits for us; QProcess would need an
/// event loop for that, or one of its own waits, and a command line sits in those of the engine. Calls come
/// from one thread at a time.
class ChildProcess {
 public:
  using Clock = std::chrono::steady_clock;

  struct Setup {
    std::filesystem::path program;
    std::vector<std::string> arguments;
    std::vector<std::pair<std::string, std::string>> environment;  ///< in addition to ours
    /// Receives each line of the child's standard error, on a thread of the object; may be empty.
    std::function<void(std::string_view line)> errorLine;
  };

  /// How the wait for a line ended.
  enum class Wait { line, closed, tooLong, timedOut, woken };

  /// Starts the program. Throws `std::system_error` when it cannot be run.
  explicit ChildProcess(Setup setup);
  /// Ends the child as `stop()` with two seconds.
  ~ChildProcess();
  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;

  /// Waits for the first line of standard output, to be called once; what follows that line is dropped.
  /// `closed`: the child closed its output or ended. `woken`: `wakeDescriptor` (-1: none) became readable.
  [[nodiscard]] Wait readFirstLine(std::string &line, Clock::time_point deadline, int wakeDescriptor = -1);

  /// True when the child ends by itself within `limit`, and before `wakeDescriptor` (-1: none) becomes
  /// readable.
  [[nodiscard]] bool endsWithin(std::chrono::milliseconds limit, int wakeDescriptor = -1);

  /// Asks the child to end (the end of its input, SIGTERM), kills it after `limit` and reaps it.
  void stop(std::chrono::milliseconds limit);

  /// "ended with exit code 3" or "was ended by signal 9"; empty while it runs.
  [[nodiscard]] std::string ending() const;
  /// The last line of standard error that is not blank. Complete after `stop()`.
  [[nodiscard]] std::string lastErrorLine() const;

 private:
  class Running;
  std::unique_ptr<Running> m_running;
};

}  // namespace velmora
