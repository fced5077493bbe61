// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One Velmora a user: who is started second asks the first to come forward, and ends.
//
//   const auto claim = SingleInstance::claim([&](const QString &command) { delegate.obey(command); });
//   if (!claim) return SingleInstance::send("listen") ? 0 : 1;
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <utility>

#include "foundation/MainQueue.h"

namespace velmora {

/// The claim to be the one that runs, for as long as it exists: a name on the session bus, or a lock and a
/// socket in the user's run-time folder where there is no bus. Main thread, with an application object.
class SingleInstance {
 public:
  /// Obeys what another process was started for: "" to come forward, "listen", "preferences" or "quit".
  /// Called from the event loop.
  using Handler = std::function<void(const QString &command)>;

  /// The claim of this process, or null when another process of the user (on the same session bus) has it.
  /// Nothing but the bus itself is waited for, for two seconds at most. When neither a bus nor a folder is to
  /// be had, one line in the log says so and the claim is granted.
  [[nodiscard]] static std::unique_ptr<SingleInstance> claim(Handler handler);

  /// Hands `command` to the one that runs. False when there is none or it has not answered within two
  /// seconds.
  [[nodiscard]] static bool send(const QString &command);

  /// Waits until no process has the claim, five seconds at most; false when one has it still. Takes it for a
  /// moment.
  [[nodiscard]] static bool waitUntilFree();

  virtual ~SingleInstance() = default;
  SingleInstance(const SingleInstance &) = delete;
  SingleInstance &operator=(const SingleInstance &) = delete;

 protected:
  explicit SingleInstance(Handler handler) : m_handler(std::move(handler)) {}
  /// Has the handler called later, when the asker has its answer: the command may end the program. What
  /// nobody knows is one line in the log.
  void obey(const QString &command);

 private:
  const Handler m_handler;
  Alive m_alive;
};

}  // namespace velmora
