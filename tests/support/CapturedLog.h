// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/Log.h"

namespace velmora::tests {

/// Collects the log's lines while it lives.
class CapturedLog {
 public:
  CapturedLog() {
    setLogSink([this](std::string_view line) {
      const std::lock_guard lock(m_mutex);
      m_lines.emplace_back(line);
      m_changed.notify_all();
    });
  }
  ~CapturedLog() { setLogSink(standardOutputSink()); }
  CapturedLog(const CapturedLog &) = delete;
  CapturedLog &operator=(const CapturedLog &) = delete;

  [[nodiscard]] std::vector<std::string> lines() const {
    const std::lock_guard lock(m_mutex);
    return m_lines;
  }

  /// How many lines begin with `label`.
  [[nodiscard]] std::ptrdiff_t count(std::string_view label) const {
    const std::lock_guard lock(m_mutex);
    return countLocked(label);
  }

  /// Waits up to 10 s for a line that begins with `label`.
  [[nodiscard]] bool waitFor(std::string_view label) const {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(10), [&] { return countLocked(label) > 0; });
  }

 private:
  std::ptrdiff_t countLocked(std::string_view label) const {
    return std::count_if(m_lines.begin(), m_lines.end(),
                         [&](const std::string &line) { return line.starts_with(label); });
  }

  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<std::string> m_lines;
};

}  // namespace velmora::tests
