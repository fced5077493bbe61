// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The local assistant as a child of this program: what Velmora talks to where no deployment is configured.
//
//   const LocalAssistant assistant({});
//   API api(delegate, assistant.deployment(), defaultsWith(assistant.token()));
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "foundation/Deployment.h"

namespace velmora {

class ChildProcess;

/// Says in one line why the local assistant does not serve, with the last line it wrote to standard error.
class LocalAssistantError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Runs while the object lives, and ends with the process also when that is killed. What it writes to
/// standard error goes to the log, line by line. Belongs to one thread.
class LocalAssistant {
 public:
  struct Settings {
    /// Absent: velmora-assistant, beside this program or in PATH.
    std::optional<std::filesystem::path> program{};
    std::chrono::milliseconds startLimit{10'000};
    std::chrono::milliseconds stopLimit{2'000};  ///< then it is killed
    int cancelDescriptor = -1;                   ///< the start is given up when it becomes readable
  };

  /// Starts it and waits until it serves. Throws `LocalAssistantError`.
  explicit LocalAssistant(const Settings &settings);
  ~LocalAssistant();
  LocalAssistant(const LocalAssistant &) = delete;
  LocalAssistant &operator=(const LocalAssistant &) = delete;

  /// Where it listens, on this machine only; the folder exists as long as it runs.
  [[nodiscard]] const Deployment &deployment() const { return m_deployment; }
  /// The access token that it takes, a new one each time; only the two processes know it.
  [[nodiscard]] const std::string &token() const { return m_token; }
  /// Waits until it has ended by itself, and says how; nothing when `wakeDescriptor` became readable before.
  [[nodiscard]] std::optional<std::string> waitForEnd(int wakeDescriptor);

 private:
  [[noreturn]] void fail(const std::string &what);
  std::string waitUntilReady();

  Settings m_settings;
  std::string m_token;
  std::unique_ptr<ChildProcess> m_child;
  Deployment m_deployment;
};

}  // namespace velmora
