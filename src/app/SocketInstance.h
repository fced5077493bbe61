// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLocalServer>

#include "app/SingleInstance.h"
#include "foundation/Descriptor.h"

namespace velmora {

/// The claim to a lock in the user's run-time folder, beside which a socket takes commands: one line each,
/// answered by another.
class SocketInstance final : public SingleInstance {
 public:
  /// Null with `isTaken` when another process has the lock, null without when there is no place for one.
  [[nodiscard]] static std::unique_ptr<SingleInstance> claim(const Handler &handler, bool &isTaken);
  [[nodiscard]] static bool send(const QString &command);

 private:
  SocketInstance(const Handler &handler, Descriptor lock, const QString &socket);
  void serve();

  const Descriptor m_lock;  // held to the end of the process, however it ends
  QLocalServer m_server;
};

}  // namespace velmora
