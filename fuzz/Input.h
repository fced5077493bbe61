// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace velmora::fuzz {

/// What a run is fed with, taken from the front. An input that is used up gives zeros and empty texts.
class Input {
 public:
  Input(const std::uint8_t *data, std::size_t size) : m_rest(reinterpret_cast<const char *>(data), size) {}

  [[nodiscard]] bool isEmpty() const { return m_rest.empty(); }
  std::uint8_t byte() {
    if (m_rest.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(m_rest.front());
    m_rest.remove_prefix(1);
    return first;
  }
  /// A text behind its length in two bytes, the lower one first; what is missing in the end is left out.
  std::string piece() {
    const std::size_t low = byte();
    return take(low | std::size_t{byte()} << 8);
  }
  std::string rest() { return take(m_rest.size()); }

 private:
  std::string take(std::size_t size) {
    std::string taken(m_rest.substr(0, size));
    m_rest.remove_prefix(std::min(size, m_rest.size()));
    return taken;
  }

  std::string_view m_rest;
};

/// Ends the run with a finding unless `holds`.
inline void require(bool holds, const char *what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

}  // namespace velmora::fuzz
