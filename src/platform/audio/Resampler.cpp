// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/Resampler.h"

#include <soxr.h>

#include <string>

#include "platform/audio/AudioSource.h"

namespace velmora {

struct Resampler::Filter {
  ~Filter() { soxr_delete(soxr); }

  std::size_t process(const float *in, std::size_t count, std::size_t &used, std::span<std::byte> out) const {
    std::size_t made = 0;
    check(soxr_process(soxr, in, count, &used, out.data(), out.size() / bytes, &made));
    return made;
  }
  static void check(soxr_error_t error) {
    if (error) throw AudioError(std::string("the sample rate cannot be converted: ") + error);
  }

  soxr_t soxr = nullptr;
  std::size_t bytes = 0;  // of one sample that comes out
};

Resampler::Resampler(int fromRate, int toRate, SampleType output, Blocks blocks)
    : m_filter(std::make_unique<Filter>()) {
  const bool integers = output == SampleType::int16;
  soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, integers ? SOXR_INT16_I : SOXR_FLOAT32_I);
  io.flags |= SOXR_NO_DITHER;
  const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
  soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  if (blocks == Blocks::small) runtime.log2_large_dft_size = runtime.log2_min_dft_size;
  soxr_error_t error = nullptr;
  m_filter->soxr = soxr_create(fromRate, toRate, 1, &error, &io, &quality, &runtime);
  m_filter->bytes = integers ? sizeof(std::int16_t) : sizeof(float);
  Filter::check(error);
}

Resampler::~Resampler() = default;

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

void Resampler::clear() { Filter::check(soxr_clear(m_filter->soxr)); }

}  // namespace velmora
