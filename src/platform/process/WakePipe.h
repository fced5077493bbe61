// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>

namespace velmora {

/// Wakes one waiting thread from any other one and from a signal handler. Waking says only that something has
/// changed, not what; it is remembered until somebody waits.
///
///   std::signal(SIGTERM, [](int) { stop = true; pipe->wake(); });
///   while (!stop) pipe.waitUntil(nextFrame);
class WakePipe {
 public:
  using Clock = std::chrono::steady_clock;

  WakePipe();
  ~WakePipe();
  WakePipe(const WakePipe &) = delete;
  WakePipe &operator=(const WakePipe &) = delete;

  /// Any thread and any signal handler; never blocks and keeps `errno`.
  void wake() const noexcept;

  /// Returns when woken, or at `deadline` (absent: never), and forgets the waking. One thread at a time.
  void waitUntil(std::optional<Clock::time_point> deadline) const;

  /// Readable while a waking is remembered; for waits on other descriptors that are to be broken off.
  [[nodiscard]] int descriptor() const { return m_reader; }

 private:
  int m_reader = -1;
  int m_writer = -1;
};

}  // namespace velmora
