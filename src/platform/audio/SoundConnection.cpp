// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/SoundConnection.h"

#include <utility>

#include "platform/audio/SoundEngine.h"

namespace velmora {

SoundConnection::SoundConnection() = default;
SoundConnection::~SoundConnection() = default;

std::shared_ptr<SoundConnection> SoundConnection::shared() {
  static std::mutex mutex;
  static std::weak_ptr<SoundConnection> current;
  const std::lock_guard lock(mutex);
  std::shared_ptr<SoundConnection> connection = current.lock();
  if (!connection) current = connection = std::shared_ptr<SoundConnection>(new SoundConnection);
  return connection;
}

SoundServer &SoundConnection::server() const {
  std::call_once(m_isOpened, [this] { m_server = soundEngine().makeServer(); });
  return *m_server;
}

std::optional<SoundConnection::Inputs> SoundConnection::inputs() { return server().inputs(); }
void SoundConnection::async(Work work) { server().async(std::move(work)); }
void SoundConnection::retryNow() { server().retryNow(); }
void SoundConnection::addListener(Listener &listener) { server().addListener(listener); }
void SoundConnection::removeListener(Listener &listener) { server().removeListener(listener); }
void SoundConnection::after(Clock::duration delay, Work work) { server().after(delay, std::move(work)); }
void SoundConnection::refresh() { server().refresh(); }
const SoundConnection::Inputs *SoundConnection::currentInputs() const { return server().currentInputs(); }
bool SoundConnection::lossIsLogged() const { return server().lossIsLogged(); }

}  // namespace velmora
