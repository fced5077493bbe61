// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Statistics.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace velmora {
namespace {

constexpr std::size_t kRemembered = 1000;

double percentile(const std::vector<std::chrono::microseconds> &sorted, std::size_t percent) {
  const std::size_t index = std::min(sorted.size() * percent / 100, sorted.size() - 1);
  return static_cast<double>(sorted[index].count()) / 1000;
}

}  // namespace

std::optional<Statistics::Place> Statistics::takePlace(int most) {
  const std::lock_guard lock(m_mutex);
  if (m_streams >= most) return std::nullopt;
  m_mostStreams = std::max(m_mostStreams, ++m_streams);
  return Place(*this);
}

void Statistics::giveBack() {
  const std::lock_guard lock(m_mutex);
  --m_streams;
}

void Statistics::addTurn(std::chrono::microseconds toFirstSound) {
  const std::lock_guard lock(m_mutex);
  if (m_latencies.size() < kRemembered) {
    m_latencies.push_back(toFirstSound);
  } else {
    m_latencies[static_cast<std::size_t>(m_turns) % kRemembered] = toFirstSound;
  }
  ++m_turns;
}

void Statistics::addRefusal() {
  const std::lock_guard lock(m_mutex);
  ++m_refused;
}

int Statistics::streams() const {
  const std::lock_guard lock(m_mutex);
  return m_streams;
}

std::string Statistics::text() const {
  const std::lock_guard lock(m_mutex);
  nlohmann::json latency;
  if (!m_latencies.empty()) {
    auto sorted = m_latencies;
    std::sort(sorted.begin(), sorted.end());
    latency = {
        {"p50", percentile(sorted, 50)}, {"p95", percentile(sorted, 95)}, {"p99", percentile(sorted, 99)}};
  }
  return nlohmann::json{{"streams", m_streams},
                        {"most_streams", m_mostStreams},
                        {"turns", m_turns},
                        {"refused", m_refused},
                        {"first_sound_ms", latency}}
      .dump();
}

}  // namespace velmora
