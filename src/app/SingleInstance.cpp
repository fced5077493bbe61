// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/SingleInstance.h"

#include <QStringList>
#include <chrono>
#include <thread>

#include "app/BusInstance.h"
#include "app/SocketInstance.h"
#include "foundation/Log.h"

namespace velmora {

std::unique_ptr<SingleInstance> SingleInstance::claim(Handler handler) {
  bool isTaken = false;
  std::unique_ptr<SingleInstance> claim = BusInstance::claim(handler, isTaken);
  if (!claim && !isTaken) claim = SocketInstance::claim(handler, isTaken);
  if (claim || isTaken) return claim;
  log("Start error: whether Velmora runs already cannot be told");
  return std::unique_ptr<SingleInstance>(new SingleInstance(std::move(handler)));
}

bool SingleInstance::send(const QString &command) {
  const std::optional<bool> isSent = BusInstance::send(command);
  return isSent ? *isSent : SocketInstance::send(command);
}

bool SingleInstance::waitUntilFree() {
  constexpr std::chrono::seconds kPatience{5};
  constexpr std::chrono::milliseconds kPause{20};
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!claim([](const QString &) {})) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

void SingleInstance::obey(const QString &command) {
  constexpr int kShown = 100;  // characters of what somebody else has written
  static const QStringList kCommands{QString(), QStringLiteral("listen"), QStringLiteral("preferences"),
                                     QStringLiteral("quit")};
  if (!kCommands.contains(command))
    return log("Command error: there is no command ", command.left(kShown).toStdString());
  MainQueue::main().async(m_alive, [this, command] { m_handler(command); });
}

}  // namespace velmora
