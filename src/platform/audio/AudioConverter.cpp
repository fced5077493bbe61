// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioConverter.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "platform/audio/AudioSource.h"
#include "platform/audio/Resampler.h"

namespace velmora {
namespace {

/// Blocks of silence that the filter's worst shortfall is measured with; it shows within the first fifty.
constexpr int kTrials = 300;

void checkFormats(const AudioFormat &from, const AudioFormat &to) {
  if (from.channels < 1 || from.sampleRate < 1000 || to.sampleRate < 1000) {
    throw AudioError("there is no conversion from " + std::to_string(from.channels) + " channels at " +
                     std::to_string(from.sampleRate) + " Hz to " + std::to_string(to.sampleRate) + " Hz");
  }
  if (to.channels != 1) throw AudioError("conversion is to one channel only");
}

/// Whether no sample needs `usableSample`; in a form that compilers turn into a few wide instructions.
bool allUsable(std::span<const float> samples) {
  constexpr auto loudest = std::bit_cast<std::uint32_t>(16.0F);
  std::uint32_t bad = 0;
  for (const float sample : samples)
    bad |= (std::bit_cast<std::uint32_t>(sample) & 0x7fffffffU) > loudest ? 1 : 0;
  return bad == 0;
}

/// A sample of either type, with full scale 1.
float sampleOf(const float *data, std::size_t at) { return usableSample(data[at]); }
float sampleOf(const std::int16_t *data, std::size_t at) { return static_cast<float>(data[at]) / 32768.0F; }

}  // namespace

class AudioConverter::Stream {
 public:
  Stream(const AudioFormat &from, const AudioFormat &to)
      : m_from(from),
        m_to(to),
        m_resampler(from.sampleRate, to.sampleRate, to.sampleType, Resampler::Blocks::small) {
    m_delay = shortfall();
    m_resampler.clear();
    m_ready.assign(m_delay * to.sampleBytes(), std::byte{0});
  }

  void convert(PCMBuffer &output, const Input &input) {
    if (output.format() != m_to) throw AudioError("the output buffer is not of the format converted to");
    const std::size_t bytes = output.frameCapacity() * m_to.sampleBytes();
    while (m_ready.size() < bytes) {
      InputStatus status = InputStatus::noDataNow;
      const PCMBuffer *const buffer = input(status);
      if (status != InputStatus::haveData || !buffer || buffer->frameLength() == 0) break;
      take(*buffer);
    }
    give(output, std::min(bytes, m_ready.size()));
  }

  [[nodiscard]] std::size_t delay() const { return m_delay; }

 private:
  /// How many frames the filter is behind at worst after a block, when it is fed tenths of a second.
  std::size_t shortfall() {
    m_mono.assign(static_cast<std::size_t>(m_from.sampleRate) / 10, 0.0F);
    std::size_t worst = 0;
    std::size_t made = 0;
    for (std::size_t block = 1; block <= kTrials; ++block) {
      resample(m_mono);
      made += m_ready.size() / m_to.sampleBytes();
      m_ready.clear();
      const std::size_t due = block * m_mono.size() * static_cast<std::size_t>(m_to.sampleRate) /
                              static_cast<std::size_t>(m_from.sampleRate);
      if (due > made) worst = std::max(worst, due - made);
    }
    return worst;
  }

  void take(const PCMBuffer &buffer) {
    if (buffer.format() != m_from) throw AudioError("the input buffer is not of the format converted from");
    const float *const floats = buffer.floatChannelData();
    if (m_from.channels == 1 && floats && allUsable({floats, buffer.frameLength()})) {
      resample({floats, buffer.frameLength()});
      return;
    }
    m_mono.resize(buffer.frameLength());
    if (floats) {
      mixDown([&buffer](int channel) { return buffer.floatChannelData(channel); }, buffer.stride());
    } else {
      mixDown([&buffer](int channel) { return buffer.int16ChannelData(channel); }, buffer.stride());
    }
    resample(m_mono);
  }

  template <typename Channels>
  void mixDown(const Channels &channels, std::size_t stride) {
    const float part = 1.0F / static_cast<float>(m_from.channels);
    for (int channel = 0; channel < m_from.channels; ++channel) {
      const auto *const data = channels(channel);
      for (std::size_t i = 0; i < m_mono.size(); ++i) {
        m_mono[i] = sampleOf(data, i * stride) * part + (channel == 0 ? 0.0F : m_mono[i]);
      }
    }
  }

  /// Appends what `rest` gives to `m_ready`.
  void resample(std::span<const float> rest) {
    while (!rest.empty()) {
      const std::size_t had = m_ready.size();
      const std::size_t most = rest.size() * static_cast<std::size_t>(m_to.sampleRate) /
                                   static_cast<std::size_t>(m_from.sampleRate) +
                               1024;
      m_ready.resize(had + most * m_to.sampleBytes());
      const std::size_t made = m_resampler.process(rest, std::span(m_ready).subspan(had));
      m_ready.resize(had + made * m_to.sampleBytes());
    }
  }

  void give(PCMBuffer &output, std::size_t bytes) {
    void *const target = m_to.sampleType == SampleType::int16 ? static_cast<void *>(output.int16ChannelData())
                                                              : output.floatChannelData();
    std::memcpy(target, m_ready.data(), bytes);
    m_ready.erase(m_ready.begin(), m_ready.begin() + static_cast<std::ptrdiff_t>(bytes));
    output.setFrameLength(static_cast<std::uint32_t>(bytes / m_to.sampleBytes()));
  }

  const AudioFormat m_from;
  const AudioFormat m_to;
  Resampler m_resampler;
  std::size_t m_delay = 0;         // frames
  std::vector<float> m_mono;       // the block being converted
  std::vector<std::byte> m_ready;  // converted and not yet given
};

AudioConverter::AudioConverter(const AudioFormat &from, const AudioFormat &to) {
  checkFormats(from, to);
  m_stream = std::make_unique<Stream>(from, to);
}

AudioConverter::~AudioConverter() = default;

void AudioConverter::convert(PCMBuffer &output, const Input &input) { m_stream->convert(output, input); }

std::uint32_t AudioConverter::delay() const { return static_cast<std::uint32_t>(m_stream->delay()); }

}  // namespace velmora
