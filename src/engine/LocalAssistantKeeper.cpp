// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/LocalAssistantKeeper.h"

#include <algorithm>
#include <utility>

#include "foundation/Log.h"

namespace velmora {
namespace {

using Clock = std::chrono::steady_clock;

// What has served so long was well, and may be started anew at once.
constexpr std::chrono::minutes kWell{1};

}  // namespace

LocalAssistantKeeper::LocalAssistantKeeper(LocalAssistant::Settings settings, Changed changed)
    : m_settings(std::move(settings)), m_changed(std::move(changed)) {
  m_settings.cancelDescriptor = m_stop.descriptor();
  m_thread = std::thread([this] { keep(); });
}

LocalAssistantKeeper::~LocalAssistantKeeper() {
  m_stopping = true;
  m_stop.wake();
  m_thread.join();
}

void LocalAssistantKeeper::keep() {
  auto pause = kFirstPause;
  while (!m_stopping) {
    const auto begin = Clock::now();
    std::string problem;
    try {
      LocalAssistant assistant(m_settings);
      tell({.deployment = assistant.deployment(), .problem = {}});
      const auto ending = assistant.waitForEnd(m_stop.descriptor());
      if (!ending) return;
      problem = "the local assistant " + *ending;
    } catch (const LocalAssistantError &error) {
      problem = error.what();
    }
    if (m_stopping) return;
    log("Local assistant error: ", problem);
    tell({.deployment = {}, .problem = problem});
    if (Clock::now() - begin > kWell) pause = kFirstPause;
    m_stop.waitUntil(Clock::now() + pause);
    pause = std::min(2 * pause, kLongestPause);
  }
}

void LocalAssistantKeeper::tell(State state) {
  MainQueue::main().async(m_alive, [this, state = std::move(state)] { m_changed(state); });
}

}  // namespace velmora
