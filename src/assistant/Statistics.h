// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the service has done so far, in numbers; no word of what was said.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

/// Any thread.
class Statistics {
 public:
  /// The place of a stream that is being served, from its beginning to its end.
  class Place {
   public:
    Place(Place &&other) noexcept : m_statistics(std::exchange(other.m_statistics, nullptr)) {}
    ~Place() {
      if (m_statistics) m_statistics->giveBack();
    }
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;
    Place &operator=(Place &&) = delete;

   private:
    friend Statistics;
    explicit Place(Statistics &statistics) : m_statistics(&statistics) {}

    Statistics *m_statistics;
  };

  /// Takes a place among `most` in one step; nothing when they are all taken.
  [[nodiscard]] std::optional<Place> takePlace(int most);

  /// A request was answered; the first sound of the answer left so long after the end of the request was
  /// found.
  void addTurn(std::chrono::microseconds toFirstSound);
  /// A stream was ended with an error by us.
  void addRefusal();

  [[nodiscard]] int streams() const;
  /// One JSON object in one line: streams, most_streams, turns, refused, first_sound_ms with p50, p95 and p99
  /// of the last thousand turns (null before the first).
  [[nodiscard]] std::string text() const;

 private:
  void giveBack();

  mutable std::mutex m_mutex;
  int m_streams = 0;
  int m_mostStreams = 0;
  std::int64_t m_turns = 0;
  std::int64_t m_refused = 0;
  std::vector<std::chrono::microseconds> m_latencies;  // a ring of the last ones
};

}  // namespace velmora
