// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <span>

#include "platform/audio/AudioFormat.h"

namespace velmora {

/// 24 dB over full scale saturates whatever happens to it; the limit keeps an infinity from becoming a NaN in
/// a filter, which would silence all that follows. What is no number counts as silence.
[[nodiscard]] inline float usableSample(float sample) {
  constexpr float loudest = 16.0F;
  return std::isnan(sample) ? 0.0F : std::clamp(sample, -loudest, loudest);
}

/// Converts one channel from one sample rate to another with 130 dB of signal to noise. Integers come out
/// rounded, without dither (which would cost 4 dB), and saturate. One thread at a time.
class Resampler {
 public:
  /// Samples are filtered in blocks: large ones spare a third of the time, small ones halve the delay.
  enum class Blocks { large, small };

  /// What converts.
  class Filter {
   public:
    virtual ~Filter() = default;
    /// Takes `count` samples at the most, and says how many it used and how many came out.
    virtual std::size_t process(const float *in, std::size_t count, std::size_t &used,
                                std::span<std::byte> out) = 0;
    virtual void clear() = 0;
  };

  /// Rates in Hz. Throws `AudioError` for rates that cannot be converted.
  Resampler(int fromRate, int toRate, SampleType output, Blocks blocks);
  Resampler(const Resampler &) = delete;
  Resampler &operator=(const Resampler &) = delete;

  /// Takes finite samples from the front of `in`, fills `out` with as many as are ready and fit, and gives
  /// how many these are. To be called again while `in` is not empty. Throws `AudioError`.
  std::size_t process(std::span<const float> &in, std::span<std::byte> out);
  /// What is left at the end of the stream; to be called until nothing comes. Throws `AudioError`.
  std::size_t flush(std::span<std::byte> out);

  /// Forgets what has come so far.
  void clear() { m_filter->clear(); }

 private:
  std::unique_ptr<Filter> m_filter;
};

}  // namespace velmora
