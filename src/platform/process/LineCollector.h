// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace velmora {

/// Cuts a stream of bytes into lines and remembers the last one that is not blank. Lines are cut off at
/// `longest` bytes. `add` and `finish` come from one thread; `last` from any.
class LineCollector {
 public:
  static constexpr std::size_t longest = 4096;

  /// `line` may be empty.
  explicit LineCollector(std::function<void(std::string_view line)> line);

  void add(std::string_view bytes);
  /// Takes what was begun for a line.
  void finish();
  [[nodiscard]] std::string last() const;

 private:
  std::function<void(std::string_view line)> m_line;
  std::string m_begun;
  mutable std::mutex m_mutex;
  std::string m_last;  // guarded by m_mutex
};

}  // namespace velmora
