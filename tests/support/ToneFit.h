// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>

namespace velmora::tests {

/// What a sine of known frequency fitted to samples leaves: its amplitude and phase (radians, of a sine at
/// the first sample), and the effective value of the rest.
struct ToneFit {
  double amplitude = 0;
  double phase = 0;
  double residue = 0;

  /// Decibels of the sine over the rest.
  [[nodiscard]] double signalToNoise() const {
    return 20 * std::log10(amplitude / std::numbers::sqrt2 / residue);
  }
};

/// Least squares with sine and cosine. `samples` is best a whole number of periods.
template <typename Sample>
[[nodiscard]] ToneFit fitTone(std::span<const Sample> samples, double hertz, int rate) {
  const double step = 2 * std::numbers::pi * hertz / rate;
  double ss = 0, sc = 0, cc = 0, sx = 0, cx = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double s = std::sin(step * static_cast<double>(i));
    const double c = std::cos(step * static_cast<double>(i));
    ss += s * s, sc += s * c, cc += c * c;
    sx += s * static_cast<double>(samples[i]), cx += c * static_cast<double>(samples[i]);
  }
  const double determinant = ss * cc - sc * sc;
  const double a = (sx * cc - cx * sc) / determinant;
  const double b = (cx * ss - sx * sc) / determinant;
  double rest = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double angle = step * static_cast<double>(i);
    rest += std::pow(static_cast<double>(samples[i]) - a * std::sin(angle) - b * std::cos(angle), 2);
  }
  return {std::hypot(a, b), std::atan2(b, a), std::sqrt(rest / static_cast<double>(samples.size()))};
}

}  // namespace velmora::tests
