// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/process/LineCollector.h"

#include <algorithm>
#include <utility>

namespace velmora {

LineCollector::LineCollector(std::function<void(std::string_view line)> line) : m_line(std::move(line)) {}

void LineCollector::add(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\n');
    const std::string_view piece = bytes.substr(0, end);
    m_begun += piece.substr(0, longest - m_begun.size());
    if (end == std::string_view::npos) return;
    finish();
    bytes.remove_prefix(end + 1);
  }
}

void LineCollector::finish() {
  const std::string line = std::exchange(m_begun, {});
  if (line.find_first_not_of(" \t\r") == std::string::npos) return;
  if (m_line) m_line(line);
  const std::lock_guard lock(m_mutex);
  m_last = line;
}

std::string LineCollector::last() const {
  const std::lock_guard lock(m_mutex);
  return m_last;
}

}  // namespace velmora
