// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/Voice.h"

#include <flite/flite.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

extern "C" cst_voice *register_cmu_us_rms(const char *folder);

namespace velmora {
namespace {

struct Release {
  void operator()(cst_wave *wave) const { delete_wave(wave); }
};

/// The voice that was recognised best of those with a free licence. To be called with the mutex held.
cst_voice *voice() {
  static cst_voice *const made = [] {
    flite_init();
    return register_cmu_us_rms(nullptr);
  }();
  return made;
}

/// What is quieter than the loudest tenth of a second by this many dB is pause.
constexpr double kPause = -30.0;
/// No sample comes nearer to full scale, in dBFS: MP3 overshoots.
constexpr double kHighestPeak = -1.5;
constexpr std::size_t kFrame = kSpeechRate / 100;
constexpr std::size_t kFade = kSpeechRate / 200;

double gainOf(double decibels) { return std::pow(10.0, decibels / 20.0); }

/// The RMS of what is not pause, 0 when there is nothing.
double levelOf(std::span<const std::int16_t> samples) {
  std::vector<double> powers;
  for (auto rest = samples; rest.size() >= kFrame; rest = rest.subspan(kFrame)) {
    double power = 0.0;
    for (const double sample : rest.first(kFrame)) power += sample * sample;
    powers.push_back(power / kFrame);
  }
  if (powers.empty()) return 0.0;
  const double least = *std::max_element(powers.begin(), powers.end()) * std::pow(10.0, kPause / 10.0);
  double sum = 0.0;
  std::size_t count = 0;
  for (const double power : powers) {
    if (power < least) continue;
    sum += power;
    ++count;
  }
  return std::sqrt(sum / static_cast<double>(std::max<std::size_t>(count, 1)));
}

/// Brings speech to its level, and its ends to silence, which would click otherwise.
void level(std::span<std::int16_t> samples) {
  const double rms = levelOf(samples);
  double peak = 0.0;
  for (const std::int16_t sample : samples) peak = std::max(peak, std::abs(static_cast<double>(sample)));
  if (rms == 0.0 || peak == 0.0) return;
  const double gain = std::min(32768.0 * gainOf(kSpeechLevel) / rms, 32768.0 * gainOf(kHighestPeak) / peak);
  const std::size_t fade = std::min(kFade, samples.size() / 2);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const std::size_t fromEnd = std::min(i, samples.size() - 1 - i);
    const double shape = fromEnd < fade ? static_cast<double>(fromEnd) / static_cast<double>(fade) : 1.0;
    samples[i] = static_cast<std::int16_t>(std::lround(samples[i] * gain * shape));
  }
}

}  // namespace

std::vector<std::int16_t> speak(std::string_view text) {
  std::vector<std::int16_t> samples;
  {
    static std::mutex speaking;
    const std::lock_guard lock(speaking);
    const std::unique_ptr<cst_wave, Release> wave(flite_text_to_wave(std::string(text).c_str(), voice()));
    if (!wave || wave->sample_rate != kSpeechRate || wave->num_channels != 1)
      throw std::runtime_error("The voice cannot speak");
    samples.assign(wave->samples, wave->samples + wave->num_samples);
  }
  level(samples);
  return samples;
}

void applyVolume(std::span<std::int16_t> samples, int percent) {
  const int gain = std::clamp(percent, 0, 100);
  for (std::int16_t &sample : samples) sample = static_cast<std::int16_t>(sample * gain / 100);
}

}  // namespace velmora
