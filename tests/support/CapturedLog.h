// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Log.h"
#include "support/Waiting.h"

namespace velmora::tests {

/// Collects the log's lines while it lives.
class CapturedLog {
 public:
  CapturedLog() {
    setLogSink([lines = m_lines](std::string_view line) { lines.put(std::string(line)); });
  }
  ~CapturedLog() { setLogSink(standardOutputSink()); }
  CapturedLog(const CapturedLog &) = delete;
  CapturedLog &operator=(const CapturedLog &) = delete;

  [[nodiscard]] std::vector<std::string> lines() const { return m_lines.values(); }

  /// How many lines begin with `label`.
  [[nodiscard]] std::ptrdiff_t count(std::string_view label) const {
    const auto all = lines();
    return std::count_if(all.begin(), all.end(),
                         [&](const std::string &line) { return line.starts_with(label); });
  }

  /// Waits for a line that begins with `label`.
  [[nodiscard]] bool waitFor(std::string_view label) const {
    return eventually([&] { return count(label) > 0; });
  }

 private:
  Inbox<std::string> m_lines;
};

}  // namespace velmora::tests
