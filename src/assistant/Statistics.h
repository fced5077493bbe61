// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the service has done so far, in numbers; no word of what was said.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace velmora {

/// Any thread.
class Statistics {
 public:
  /// A stream that is being served, from its beginning to its end.
  class Stream {
   public:
    explicit Stream(Statistics &statistics) : m_statistics(statistics) { m_statistics.changeStreams(+1); }
    ~Stream() { m_statistics.changeStreams(-1); }
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;

   private:
    Statistics &m_statistics;
  };

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
  void changeStreams(int by);

  mutable std::mutex m_mutex;
  int m_streams = 0;
  int m_mostStreams = 0;
  std::int64_t m_turns = 0;
  std::int64_t m_refused = 0;
  std::vector<std::chrono::microseconds> m_latencies;  // a ring of the last ones
};

}  // namespace velmora
