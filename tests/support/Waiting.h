// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace velmora::tests {

/// How long a test waits for what must come: long enough for a loaded machine under a sanitizer.
inline constexpr std::chrono::seconds kPatience{30};

/// Waits until `condition` holds, for what tells nobody that it has changed; false when the patience runs
/// out.
template <typename Condition>
[[nodiscard]] bool eventually(const Condition &condition) {
  for (const auto end = std::chrono::steady_clock::now() + kPatience; !condition();) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

/// Values that arrive from other threads. Copies share them, so that a late callback may hold one of its own.
template <typename Value>
class Inbox {
 public:
  void put(Value value) const {
    const std::lock_guard lock(m_state->mutex);
    m_state->values.push_back(std::move(value));
    m_state->changed.notify_all();
  }
  /// The values once there are `count` of them; fewer when the patience ran out.
  [[nodiscard]] std::vector<Value> waitFor(std::size_t count) const {
    std::unique_lock lock(m_state->mutex);
    m_state->changed.wait_for(lock, kPatience, [&] { return m_state->values.size() >= count; });
    return m_state->values;
  }
  [[nodiscard]] std::vector<Value> values() const { return waitFor(0); }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Value> values;
  };
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace velmora::tests
