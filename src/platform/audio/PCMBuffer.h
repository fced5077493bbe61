// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/audio/AudioFormat.h"

namespace velmora {

/// A piece of audio: room for a number of frames, of which the first `frameLength()` are meant. Silent when
/// made. One thread at a time.
class PCMBuffer {
 public:
  /// Throws `AudioError` for a format without channels.
  PCMBuffer(const AudioFormat &format, std::uint32_t frameCapacity);

  [[nodiscard]] const AudioFormat &format() const { return m_format; }
  [[nodiscard]] std::uint32_t frameCapacity() const { return m_capacity; }

  [[nodiscard]] std::uint32_t frameLength() const { return m_length; }
  /// What exceeds the capacity is cut off.
  void setFrameLength(std::uint32_t frames);

  /// The first sample of a channel, the next ones each `stride()` further; null when the format's samples are
  /// of the other type or there is no such channel.
  [[nodiscard]] float *floatChannelData(int channel = 0);
  [[nodiscard]] const float *floatChannelData(int channel = 0) const;
  [[nodiscard]] std::int16_t *int16ChannelData(int channel = 0);
  [[nodiscard]] const std::int16_t *int16ChannelData(int channel = 0) const;
  [[nodiscard]] std::size_t stride() const;

 private:
  [[nodiscard]] std::size_t offset(int channel) const;

  AudioFormat m_format;
  std::uint32_t m_capacity;
  std::uint32_t m_length = 0;
  std::vector<float> m_floats;  // the one of the two that the format wants
  std::vector<std::int16_t> m_integers;
};

}  // namespace velmora
