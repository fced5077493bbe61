// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <mutex>

namespace velmora {

/// Lets through `burst` events at once and `aSecond` in the long run. Any thread.
class RateLimit {
 public:
  using Time = std::chrono::system_clock::time_point;

  RateLimit(double burst, double aSecond, Time now)
      : m_burst(burst), m_aSecond(aSecond), m_left(burst), m_last(now) {}

  /// Whether one more may come now. A clock that was set back gives nothing.
  [[nodiscard]] bool admit(Time now) {
    const std::lock_guard lock(m_mutex);
    const double elapsed = std::max(0.0, std::chrono::duration<double>(now - m_last).count());
    m_last = now;
    m_left = std::min(m_burst, m_left + elapsed * m_aSecond);
    if (m_left < 1) return false;
    m_left -= 1;
    return true;
  }

 private:
  const double m_burst;
  const double m_aSecond;
  std::mutex m_mutex;
  double m_left;
  Time m_last;
};

}  // namespace velmora
