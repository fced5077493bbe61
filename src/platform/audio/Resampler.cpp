// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/Resampler.h"

#include "platform/audio/SoundEngine.h"

namespace velmora {

Resampler::Resampler(int fromRate, int toRate, SampleType output, Blocks blocks)
    : m_filter(soundEngine().makeFilter(fromRate, toRate, output, blocks)) {}

std::size_t Resampler::process(std::span<const float> &in, std::span<std::byte> out) {
  if (in.empty()) return 0;
  std::size_t used = 0;
  const std::size_t made = m_filter->process(in.data(), in.size(), used, out);
  in = in.subspan(used);
  return made;
}

std::size_t Resampler::flush(std::span<std::byte> out) {
  std::size_t used = 0;
  return m_filter->process(nullptr, 0, used, out);
}

}  // namespace velmora
