// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The formula that both wave views share: sines across the width, under a parabola that pins both ends to the
// centre line.
#pragma once

#include <QPainter>
#include <QPolygonF>
#include <cmath>
#include <cstdint>

namespace velmora {

/// 1 for the first of `numberOfWaves` waves, falling evenly; the last is above 0.
[[nodiscard]] inline double waveProgress(std::int64_t wave, std::int64_t numberOfWaves) {
  return 1.0 - static_cast<double>(wave) / static_cast<double>(numberOfWaves);
}

/// The part of the greatest height that a wave takes. A negative one is drawn mirrored.
[[nodiscard]] inline double normedAmplitude(double progress, double offset, double level) {
  return (1.5 * progress + offset) * level;
}

/// Stops the program on a negative number of waves.
void requireWaves(std::int64_t numberOfWaves);

/// One wave in a view, in logical pixels of the upward axis. A view without a width has no meaningful wave.
class Wave {
 public:
  struct Shape {
    double width;
    double height;
    double frequency;  ///< periods across the width
    double phase;      ///< radians
    double amplitude;  ///< the greatest height above the centre line, negative when mirrored
  };
  explicit Wave(const Shape &shape)
      : m_shape(shape), m_middle(shape.width * 0.5), m_inverseMiddle(1.0 / m_middle) {}

  /// The argument of the sine at `x`, in radians.
  [[nodiscard]] double angle(double x) const {
    return kTwoPi * m_shape.frequency * x / m_shape.width + m_shape.phase;
  }
  /// The point at `x`, for the `sine` of the angle there.
  [[nodiscard]] QPointF point(double x, double sine) const {
    const double off = (x - m_middle) * m_inverseMiddle;
    return {x, sine * (1.0 - off * off) * m_shape.amplitude + m_shape.height * 0.5};
  }

 private:
  static constexpr double kTwoPi = 6.283185307179586;
  Shape m_shape;
  double m_middle;
  double m_inverseMiddle;
};

/// Strokes the line through `points`. What cannot be drawn, as a level that is no number makes it, is not.
void strokeWave(QPainter &painter, const QPolygonF &points, const QColor &color, double lineWidth);

}  // namespace velmora
