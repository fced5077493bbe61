// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The local assistant for as long as a program runs that has windows to show meanwhile.
//
//   LocalAssistantKeeper keeper({}, [](const LocalAssistantKeeper::State &state) {
//     if (state.deployment) …
//   });
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "engine/LocalAssistant.h"
#include "foundation/MainQueue.h"
#include "platform/process/WakePipe.h"

namespace velmora {

/// Starts the local assistant on a thread of its own, and anew whenever it ends: soon the first time, later
/// and later when that does not help. Each start has another port and other certificates. Main thread.
class LocalAssistantKeeper {
 public:
  struct State {
    std::optional<Deployment> deployment;  ///< while it serves
    std::string problem;                   ///< else why it does not; empty while it starts the first time
  };
  using Changed = std::function<void(const State &state)>;  ///< on the main thread

  /// Between two starts: the first time, and at most.
  static constexpr std::chrono::milliseconds kFirstPause{500};
  static constexpr std::chrono::milliseconds kLongestPause{30'000};

  LocalAssistantKeeper(LocalAssistant::Settings settings, Changed changed);
  /// Ends it; waits for that.
  ~LocalAssistantKeeper();
  LocalAssistantKeeper(const LocalAssistantKeeper &) = delete;
  LocalAssistantKeeper &operator=(const LocalAssistantKeeper &) = delete;

 private:
  void keep();
  void tell(State state);

  LocalAssistant::Settings m_settings;
  const Changed m_changed;
  std::atomic<bool> m_stopping = false;
  WakePipe m_stop;
  Alive m_alive;
  std::thread m_thread;  // the last one: it uses the rest
};

}  // namespace velmora
