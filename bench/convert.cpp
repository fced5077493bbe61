// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The converter beside soxr called bare with the same filter (the ratio), and with soxr's own settings, whose
// larger blocks are faster and double the delay. Rounds alternate, so that a noisy moment hits all of them.
//
//   bench_convert [rounds]        200 by default, of 100 buffers each
#include <soxr.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/audio/AudioConverter.h"
#include "support/ToneFit.h"

namespace {

using namespace velmora;
using Clock = std::chrono::steady_clock;

constexpr int kFrom = 44100;
constexpr int kTo = 16000;
constexpr std::uint32_t kIn = 4410;
constexpr std::uint32_t kOut = 1600;

/// One way to convert: takes 4410 samples, appends what it gives.
template <typename Sample>
class Candidate {
 public:
  virtual ~Candidate() = default;
  virtual void convert(const float *in, std::vector<Sample> &out) = 0;
};

template <typename Sample>
constexpr bool kIntegers = sizeof(Sample) == 2;

template <typename Sample>
class Ours final : public Candidate<Sample> {
 public:
  void convert(const float *in, std::vector<Sample> &out) override {
    std::copy_n(in, kIn, m_input.floatChannelData());
    m_converter.convert(m_output, [this](AudioConverter::InputStatus &status) {
      status = AudioConverter::InputStatus::haveData;
      return &m_input;
    });
    if constexpr (kIntegers<Sample>) {
      out.insert(out.end(), m_output.int16ChannelData(),
                 m_output.int16ChannelData() + m_output.frameLength());
    } else {
      out.insert(out.end(), m_output.floatChannelData(),
                 m_output.floatChannelData() + m_output.frameLength());
    }
  }
  Ours() { m_input.setFrameLength(kIn); }

 private:
  static constexpr AudioFormat kFormat{kIntegers<Sample> ? SampleType::int16 : SampleType::float32, kTo};
  AudioConverter m_converter{{SampleType::float32, kFrom}, kFormat};
  PCMBuffer m_input{{SampleType::float32, kFrom}, kIn};
  PCMBuffer m_output{kFormat, kOut};
};

template <typename Sample>
class Bare final : public Candidate<Sample> {
 public:
  explicit Bare(unsigned blockSize) {
    soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, kIntegers<Sample> ? SOXR_INT16_I : SOXR_FLOAT32_I);
    io.flags |= SOXR_NO_DITHER;
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    if (blockSize) runtime.log2_large_dft_size = blockSize;
    soxr_error_t error = nullptr;
    m_soxr = soxr_create(kFrom, kTo, 1, &error, &io, &quality, &runtime);
    if (error) throw std::runtime_error(error);
  }
  ~Bare() override { soxr_delete(m_soxr); }
  Bare(const Bare &) = delete;
  Bare &operator=(const Bare &) = delete;

  void convert(const float *in, std::vector<Sample> &out) override {
    std::size_t used = 0;
    std::size_t made = 0;
    if (soxr_process(m_soxr, in, kIn, &used, m_out.data(), m_out.size(), &made) || used != kIn)
      throw std::runtime_error("soxr");
    out.insert(out.end(), m_out.begin(), m_out.begin() + static_cast<std::ptrdiff_t>(made));
  }

 private:
  soxr_t m_soxr = nullptr;
  std::vector<Sample> m_out = std::vector<Sample>(4096);
};

template <typename Sample>
std::unique_ptr<Candidate<Sample>> make(int which) {
  if (which == 0) return std::make_unique<Ours<Sample>>();
  return std::make_unique<Bare<Sample>>(which == 1 ? 10 : 0);
}
constexpr const char *kNames[] = {"velmora", "soxr bare, same filter", "soxr bare, its settings"};
constexpr int kCandidates = 3;

std::vector<float> tone(double hertz, int buffers) {
  std::vector<float> samples(static_cast<std::size_t>(buffers) * kIn);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / kFrom;
    samples[i] = static_cast<float>(0.99 * std::sin(angle));
  }
  return samples;
}

template <typename Sample>
std::vector<Sample> converted(int which, const std::vector<float> &samples) {
  const auto candidate = make<Sample>(which);
  std::vector<Sample> out;
  for (std::size_t at = 0; at < samples.size(); at += kIn) candidate->convert(samples.data() + at, out);
  return out;
}

double signalToNoise(int which, double hertz) {
  const auto out = converted<std::int16_t>(which, tone(hertz, 50));
  return tests::fitTone<std::int16_t>(std::span(out).subspan(kOut, 40UL * kOut), hertz, kTo).signalToNoise();
}

/// The effective value of what is left of a tone above the new range, in dB under the tone.
double alias(int which, double hertz) {
  const auto out = converted<float>(which, tone(hertz, 50));
  double power = 0;
  for (std::size_t i = kOut; i < 40UL * kOut; ++i) power += out[i] * static_cast<double>(out[i]);
  return 10 * std::log10(power / (39.0 * kOut) * 2 / (0.99 * 0.99));
}

/// Milliseconds by which a consumer of 1600 frames a buffer is behind: the worst that is missing after a
/// buffer, and the place where an impulse comes out.
double delay(int which) {
  std::vector<float> samples(100UL * kIn);
  samples[20UL * kIn] = 1;
  const auto candidate = make<float>(which);
  std::vector<float> out;
  std::size_t missing = 0;
  for (std::size_t block = 0; block < 100; ++block) {
    candidate->convert(samples.data() + block * kIn, out);
    missing = std::max(missing, (block + 1) * kOut - std::min(out.size(), (block + 1) * kOut));
  }
  const auto peak = static_cast<std::size_t>(std::max_element(out.begin(), out.end()) - out.begin());
  return static_cast<double>(missing + peak - 20UL * kOut) * 1000 / kTo;
}

}  // namespace

int main(int count, char **arguments) {
  const int rounds = count > 1 ? std::max(std::atoi(arguments[1]), 3) : 200;
  const std::vector<float> input = tone(1000, 100);
  std::vector<double> times[kCandidates];
  std::unique_ptr<Candidate<std::int16_t>> candidates[kCandidates];
  for (int which = 0; which < kCandidates; ++which) candidates[which] = make<std::int16_t>(which);
  std::vector<std::int16_t> out;
  out.reserve(101UL * kOut);
  for (int round = 0; round < rounds; ++round) {
    for (int which = 0; which < kCandidates; ++which) {
      out.clear();
      const auto begin = Clock::now();
      for (std::size_t at = 0; at < input.size(); at += kIn)
        candidates[which]->convert(input.data() + at, out);
      times[which].push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count() / 100);
    }
  }
  std::printf("%-26s %9s %7s %9s %9s %11s %11s\n", "44100 to 16000 Hz, 0.1 s", "us/buffer", "delay",
              "SNR 1 kHz", "SNR 7 kHz", "alias 8.5 k", "alias 12 k");
  double medians[kCandidates];
  for (int which = 0; which < kCandidates; ++which) {
    std::sort(times[which].begin(), times[which].end());
    medians[which] = times[which][times[which].size() / 2];
    std::printf("%-26s %9.2f %4.1f ms %6.1f dB %6.1f dB %8.1f dB %8.1f dB\n", kNames[which], medians[which],
                delay(which), signalToNoise(which, 1000), signalToNoise(which, 7000), alias(which, 8500),
                alias(which, 12000));
  }
  std::printf("ratio to soxr bare, same filter: %.2f\n", medians[0] / medians[1]);
  return 0;
}
