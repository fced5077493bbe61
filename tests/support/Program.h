// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace velmora::tests {

/// The processes that a process has started, zombies included.
[[nodiscard]] inline std::vector<pid_t> childrenOf(pid_t process) {
  std::vector<pid_t> all;
  std::error_code gone;
  const std::string tasks = "/proc/" + std::to_string(process) + "/task";
  for (const auto &thread : std::filesystem::directory_iterator(tasks, gone)) {
    std::ifstream file(thread.path() / "children");
    for (pid_t child = 0; file >> child;) all.push_back(child);
  }
  return all;
}

/// A built program, looked at from outside. Waits at most a minute for whatever it waits for.
class Program {
 public:
  using Environment = std::vector<std::pair<std::string, std::string>>;

  Program(const std::string &file, const std::vector<std::string> &arguments,
          const Environment &environment) {
    QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : environment) {
      all.insert(QString::fromStdString(name), QString::fromStdString(value));
    }
    m_process.setProcessEnvironment(all);
    QStringList texts;
    for (const std::string &argument : arguments) texts << QString::fromStdString(argument);
    m_process.start(QString::fromStdString(file), texts);
    m_started = m_process.waitForStarted(kLimit);
  }
  ~Program() {
    m_process.closeWriteChannel();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLimit)) m_process.kill();
    m_process.waitForFinished(kLimit);
  }
  Program(const Program &) = delete;
  Program &operator=(const Program &) = delete;

  /// Writes to its standard input and leaves that open.
  void say(const std::string &bytes) {
    m_process.write(bytes.data(), static_cast<qint64>(bytes.size()));
    while (m_process.bytesToWrite() > 0 && m_process.waitForBytesWritten(kLimit)) {
    }
  }

  /// Closes its standard input and waits for its end; the exit code, -1 for a crash, -2 when it does not end.
  int finish() {
    m_process.closeWriteChannel();
    return wait();
  }
  /// The same with standard input left open.
  int wait() {
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(kLimit)) return -2;
    if (!m_started || m_process.exitStatus() != QProcess::NormalExit) return -1;
    return m_process.exitCode();
  }

  [[nodiscard]] bool isRunning() {
    m_process.waitForFinished(0);
    return m_process.state() != QProcess::NotRunning;
  }
  /// Nothing when it has ended: a process of no number would be everybody around.
  void signal(int number) const {
    if (pid() > 0) ::kill(pid(), number);
  }
  [[nodiscard]] pid_t pid() const { return static_cast<pid_t>(m_process.processId()); }

  /// All that has come so far.
  [[nodiscard]] const std::string &out() {
    m_out += m_process.readAllStandardOutput().toStdString();
    return m_out;
  }
  [[nodiscard]] const std::string &err() {
    m_err += m_process.readAllStandardError().toStdString();
    return m_err;
  }

  /// Waits until standard output or error holds `text`.
  bool waitForOut(const std::string &text) {
    return waitFor(QProcess::StandardOutput, [&] { return out().find(text) != std::string::npos; });
  }
  bool waitForErr(const std::string &text) {
    return waitFor(QProcess::StandardError, [&] { return err().find(text) != std::string::npos; });
  }

 private:
  static constexpr int kLimit = 60'000;

  template <typename Condition>
  bool waitFor(QProcess::ProcessChannel channel, const Condition &condition) {
    m_process.setReadChannel(channel);
    while (!condition())
      if (!m_process.waitForReadyRead(kLimit)) return false;
    return true;
  }

  QProcess m_process;
  bool m_started = false;
  std::string m_out;
  std::string m_err;
};

}  // namespace velmora::tests
