// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/Room.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace velmora {
namespace {

/// In dB under the utterance. Of the levels tried in the tuned half of bench/understanding this is the best.
constexpr double kLevel = -25.0;

/// A first-order low pass with a corner two octaves from the next one's: together they fall by 3 dB an
/// octave.
struct Octaves {
  double pole;
  double gain;
  double state = 0.0;
};

class PinkNoise {
 public:
  double next() {
    const double white = m_distribution(m_random);
    double sum = kRest * white;
    for (Octaves &octaves : m_octaves)
      sum += octaves.state = octaves.pole * octaves.state + octaves.gain * white;
    return sum;
  }

 private:
  static constexpr double kRest = 0.1848;  // above the highest corner

  std::minstd_rand m_random;
  std::uniform_real_distribution<double> m_distribution{-1.0, 1.0};
  std::array<Octaves, 3> m_octaves{{{0.99765, 0.0990460}, {0.96300, 0.2965164}, {0.57000, 1.0526913}}};
};

/// 1 for an empty one.
double powerOf(std::span<const double> samples) {
  double power = 0.0;
  for (const double sample : samples) power += sample * sample;
  return power > 0.0 ? power : 1.0;
}

}  // namespace

std::vector<std::int16_t> withRoom(std::span<const std::int16_t> utterance) {
  const std::vector<double> speech(utterance.begin(), utterance.end());
  std::vector<double> noise(speech.size());
  PinkNoise pink;
  std::generate(noise.begin(), noise.end(), [&pink] { return pink.next(); });
  const double scale = std::pow(10.0, kLevel / 20.0) * std::sqrt(powerOf(speech) / powerOf(noise));
  std::vector<std::int16_t> result;
  result.reserve(speech.size());
  for (std::size_t i = 0; i < speech.size(); ++i) {
    result.push_back(
        static_cast<std::int16_t>(std::lround(std::clamp(speech[i] + scale * noise[i], -32768.0, 32767.0))));
  }
  return result;
}

}  // namespace velmora
