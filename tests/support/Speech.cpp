// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/Speech.h"

#include <flite/flite.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>

#include "assistant/hearing/PinkFilter.h"

extern "C" cst_voice *register_cmu_us_slt(const char *folder);
extern "C" cst_voice *register_cmu_us_awb(const char *folder);

namespace velmora::tests {

Samples spoken(std::string_view text, Speaker speaker) {
  static const int started = flite_init();
  static cst_voice *const slt = register_cmu_us_slt(nullptr);
  static cst_voice *const awb = register_cmu_us_awb(nullptr);
  cst_wave *const wave = flite_text_to_wave(std::string(text).c_str(), speaker == Speaker::slt ? slt : awb);
  if (started < 0 || !wave || wave->sample_rate != 16000) throw std::runtime_error("flite cannot speak");
  Samples samples(wave->samples, wave->samples + wave->num_samples);
  delete_wave(wave);
  return samples;
}

Samples trimmed(const Samples &speech) {
  const auto isLoud = [](std::int16_t sample) { return std::abs(sample) > 300; };
  return {std::find_if(speech.begin(), speech.end(), isLoud),
          std::find_if(speech.rbegin(), speech.rend(), isLoud).base()};
}

Samples pinkNoise(std::size_t count, double level, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> white;
  PinkFilter pink;
  std::vector<double> noise(count);
  double power = 0.0;
  for (double &value : noise) {
    value = pink.next(white(random));
    power += value * value;
  }
  const double scale = 32768.0 * std::pow(10.0, level / 20.0) / std::sqrt(power / static_cast<double>(count));
  Samples samples;
  samples.reserve(count);
  for (const double value : noise) {
    samples.push_back(static_cast<std::int16_t>(std::lround(std::clamp(value * scale, -32768.0, 32767.0))));
  }
  return samples;
}

double levelOf(std::span<const std::int16_t> samples) {
  double power = 0.0;
  for (const double sample : samples) power += sample * sample;
  return 10.0 * std::log10(power / static_cast<double>(samples.size()) / (32768.0 * 32768.0) + 1e-12);
}

Samples mixed(Samples one, const Samples &other) {
  one.resize(std::max(one.size(), other.size()));
  for (std::size_t i = 0; i < other.size(); ++i) {
    one[i] = static_cast<std::int16_t>(std::clamp(one[i] + other[i], -32768, 32767));
  }
  return one;
}

Samples joined(std::initializer_list<Samples> parts) {
  Samples all;
  for (const Samples &part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace velmora::tests
