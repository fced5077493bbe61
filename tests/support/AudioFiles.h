// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "platform/audio/AudioSource.h"

namespace velmora::tests {

/// Writes interleaved samples (full scale is 1) as a file of libsndfile's `format`, of 8 or 16 bits. They are
/// rounded to its width here: libsndfile's own conversion takes the largest number for full scale and
/// truncates.
inline void writeAudio(const std::filesystem::path &path, const std::vector<float> &samples, int rate,
                       int channels, int format) {
  SF_INFO info{};
  info.samplerate = rate;
  info.channels = channels;
  info.format = format;
  const std::unique_ptr<SNDFILE, decltype([](SNDFILE *f) { sf_close(f); })> file(
      sf_open(path.c_str(), SFM_WRITE, &info));
  const auto count = static_cast<sf_count_t>(samples.size());
  const int bits = (format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_U8 ? 8 : 16;
  const double fullScale = std::ldexp(1.0, bits - 1);
  std::vector<int> rounded;
  for (const float sample : samples) {
    const double value = std::clamp(std::round(sample * fullScale), -fullScale, fullScale - 1);
    rounded.push_back(static_cast<int>(std::ldexp(value, 32 - bits)));
  }
  const bool written = file && sf_write_int(file.get(), rounded.data(), count) == count;
  if (!written) throw std::runtime_error(path.string() + ": " + sf_strerror(file.get()));
}

/// What a file of sound holds, as libsndfile reads it.
struct Sound {
  SF_INFO format{};
  std::vector<std::int16_t> samples;
};
inline Sound readAudio(const std::filesystem::path &path) {
  Sound sound;
  const std::unique_ptr<SNDFILE, decltype([](SNDFILE *f) { sf_close(f); })> file(
      sf_open(path.c_str(), SFM_READ, &sound.format));
  if (!file) throw std::runtime_error(path.string() + ": " + sf_strerror(nullptr));
  std::vector<std::int16_t> piece(4096);
  for (sf_count_t count = 0; (count = sf_read_short(file.get(), piece.data(), 4096)) > 0;)
    sound.samples.insert(sound.samples.end(), piece.begin(), piece.begin() + count);
  return sound;
}

/// A sine of `hertz` with one amplitude for each channel.
inline std::vector<float> tone(double hertz, double seconds, int rate,
                               const std::vector<double> &amplitudes) {
  std::vector<float> samples;
  const auto frames = static_cast<int>(std::lround(seconds * rate));
  for (int i = 0; i < frames; ++i) {
    const double sine = std::sin(2 * std::numbers::pi * hertz * i / rate);
    for (const double amplitude : amplitudes) samples.push_back(static_cast<float>(amplitude * sine));
  }
  return samples;
}

/// Everything a source gives, read in frames.
inline std::vector<std::int16_t> readAll(AudioSource &source,
                                         std::size_t frameSamples = AudioSource::frameSamples) {
  std::vector<std::int16_t> all;
  std::vector<std::int16_t> frame(frameSamples);
  for (;;) {
    const AudioRead read = source.read(frame);
    all.insert(all.end(), frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(read.samples));
    if (read.ended) return all;
  }
}

}  // namespace velmora::tests
