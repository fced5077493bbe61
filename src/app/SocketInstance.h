// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSocketNotifier>
#include <filesystem>
#include <memory>

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
  SocketInstance(const Handler &handler, Descriptor lock, const std::filesystem::path &socket);
  void accept();
  void hear(Descriptor asker);

  const Descriptor m_lock;  // held to the end of the process, however it ends
  const Descriptor m_listener;
  std::unique_ptr<QSocketNotifier> m_notifier;  // and those of who is heard, as its children
};

}  // namespace velmora
