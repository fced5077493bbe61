// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

namespace velmora {

class AudioEngine;

/// The microphone as something to look at: it keeps the newest buffer that the engine heard, for one thread
/// that draws it. Neither that thread nor the audio thread ever waits for the other.
class Microphone {
 public:
  /// The engine outlives the microphone.
  explicit Microphone(AudioEngine &engine);
  ~Microphone();
  Microphone(const Microphone &) = delete;
  Microphone &operator=(const Microphone &) = delete;

  /// How loud answers are asked for, 1 being full. It does not change what is heard. Any thread.
  [[nodiscard]] double volume() const { return m_volume; }
  void setVolume(double volume) { m_volume = volume; }

  struct Newest {
    std::span<const float> samples;  ///< one channel, full scale 1; empty before the first after a start
    std::uint64_t number = 0;        ///< grows with each buffer
  };
  /// Stays as it is until the next call. On one thread.
  [[nodiscard]] Newest newest();

 private:
  friend class AudioEngine;
  struct Slot {
    std::vector<float> samples;
    std::uint64_t number = 0;
  };

  /// By one thread at a time.
  void take(std::span<const float> samples);

  AudioEngine &m_engine;
  std::atomic<double> m_volume = 1.0;
  // Of three buffers one is written, one is read, and one is passed on by an exchange: its number, and
  // whether it is newer than what the reader has.
  static constexpr unsigned kFresh = 4;
  std::array<Slot, 3> m_slots;
  unsigned m_written = 0;
  unsigned m_read = 1;
  std::atomic<unsigned> m_passed = 2;
  std::uint64_t m_count = 0;
};

}  // namespace velmora
