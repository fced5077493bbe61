// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Makes pink noise of white.
#pragma once

#include <array>

namespace velmora {

/// First-order low passes with corners two octaves apart, whose sum falls by 3 dB an octave. One for each
/// stream of noise.
class PinkFilter {
 public:
  /// The next sample, of the next white one.
  double next(double white) {
    double sum = kRest * white;
    for (LowPass &lowPass : m_lowPasses)
      sum += lowPass.state = lowPass.pole * lowPass.state + lowPass.gain * white;
    return sum;
  }

 private:
  struct LowPass {
    double pole;
    double gain;
    double state = 0.0;
  };
  static constexpr double kRest = 0.1848;  // above the highest corner

  std::array<LowPass, 3> m_lowPasses{{{0.99765, 0.0990460}, {0.96300, 0.2965164}, {0.57000, 1.0526913}}};
};

}  // namespace velmora
