// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/engine/SoxrFilter.h"

#include <soxr.h>

#include <string>

#include "platform/audio/AudioSource.h"

namespace velmora {
namespace {

void check(soxr_error_t error) {
  if (error) throw AudioError(std::string("the sample rate cannot be converted: ") + error);
}

class SoxrFilter final : public Resampler::Filter {
 public:
  SoxrFilter(int fromRate, int toRate, SampleType output, Resampler::Blocks blocks)
      : m_bytes(output == SampleType::int16 ? sizeof(std::int16_t) : sizeof(float)) {
    soxr_io_spec_t io =
        soxr_io_spec(SOXR_FLOAT32_I, output == SampleType::int16 ? SOXR_INT16_I : SOXR_FLOAT32_I);
    io.flags |= SOXR_NO_DITHER;
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    if (blocks == Resampler::Blocks::small) runtime.log2_large_dft_size = runtime.log2_min_dft_size;
    soxr_error_t error = nullptr;
    m_soxr.reset(soxr_create(fromRate, toRate, 1, &error, &io, &quality, &runtime));
    check(error);
  }

  std::size_t process(const float *in, std::size_t count, std::size_t &used,
                      std::span<std::byte> out) override {
    std::size_t made = 0;
    check(soxr_process(m_soxr.get(), in, count, &used, out.data(), out.size() / m_bytes, &made));
    return made;
  }
  void clear() override { check(soxr_clear(m_soxr.get())); }

 private:
  const std::size_t m_bytes;  // of one sample that comes out
  std::unique_ptr<soxr, decltype([](soxr_t filter) { soxr_delete(filter); })> m_soxr;
};

}  // namespace

std::unique_ptr<Resampler::Filter> makeSoxrFilter(int fromRate, int toRate, SampleType output,
                                                  Resampler::Blocks blocks) {
  return std::make_unique<SoxrFilter>(fromRate, toRate, output, blocks);
}

}  // namespace velmora
