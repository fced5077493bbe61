// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/PCMBuffer.h"

#include <algorithm>

#include "platform/audio/AudioSource.h"

namespace velmora {

PCMBuffer::PCMBuffer(const AudioFormat &format, std::uint32_t frameCapacity)
    : m_format(format), m_capacity(frameCapacity) {
  if (format.channels < 1) throw AudioError("an audio buffer needs a channel");
  const std::size_t samples = std::size_t{frameCapacity} * static_cast<std::size_t>(format.channels);
  if (format.sampleType == SampleType::float32) {
    m_floats.resize(samples);
  } else {
    m_integers.resize(samples);
  }
}

void PCMBuffer::setFrameLength(std::uint32_t frames) { m_length = std::min(frames, m_capacity); }

std::size_t PCMBuffer::stride() const {
  return m_format.interleaved ? static_cast<std::size_t>(m_format.channels) : 1;
}

std::size_t PCMBuffer::offset(int channel) const {
  return static_cast<std::size_t>(channel) * (m_format.interleaved ? 1 : m_capacity);
}

const float *PCMBuffer::floatChannelData(int channel) const {
  const bool there =
      m_format.sampleType == SampleType::float32 && channel >= 0 && channel < m_format.channels;
  return there ? m_floats.data() + offset(channel) : nullptr;
}

const std::int16_t *PCMBuffer::int16ChannelData(int channel) const {
  const bool there = m_format.sampleType == SampleType::int16 && channel >= 0 && channel < m_format.channels;
  return there ? m_integers.data() + offset(channel) : nullptr;
}

float *PCMBuffer::floatChannelData(int channel) {
  return const_cast<float *>(static_cast<const PCMBuffer *>(this)->floatChannelData(channel));
}

std::int16_t *PCMBuffer::int16ChannelData(int channel) {
  return const_cast<std::int16_t *>(static_cast<const PCMBuffer *>(this)->int16ChannelData(channel));
}

}  // namespace velmora
