// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPolygonF>
#include <QWidget>
#include <cstdint>

namespace velmora {

/// The level wave: a bundle of sine waves of one opacity on black, which moves on by `phaseShift` with each
/// level and not with the drawing. Owns no timer. Lengths are logical pixels. Main thread.
class WaveformView : public QWidget {
  Q_OBJECT

 public:
  explicit WaveformView(QWidget *parent = nullptr);

  /// Moves the waves on, takes the greater of `level` and `idleAmplitude`, and asks for a redraw.
  void updateWithLevel(double level);

  /// The level, 0 to 1 in normal use.
  [[nodiscard]] double amplitude() const { return m_amplitude; }
  [[nodiscard]] const QColor &waveColor() const { return m_waveColor; }
  void setWaveColor(const QColor &color) { m_waveColor = color; }
  /// A negative number is fatal when the view is drawn.
  [[nodiscard]] std::int64_t numberOfWaves() const { return m_numberOfWaves; }
  void setNumberOfWaves(std::int64_t number) { m_numberOfWaves = number; }
  [[nodiscard]] double primaryWaveLineWidth() const { return m_primaryWaveLineWidth; }
  void setPrimaryWaveLineWidth(double width) { m_primaryWaveLineWidth = width; }
  [[nodiscard]] double secondaryWaveLineWidth() const { return m_secondaryWaveLineWidth; }
  void setSecondaryWaveLineWidth(double width) { m_secondaryWaveLineWidth = width; }
  /// The lower bound of the level.
  [[nodiscard]] double idleAmplitude() const { return m_idleAmplitude; }
  void setIdleAmplitude(double amplitude) { m_idleAmplitude = amplitude; }
  /// Sine periods across the width.
  [[nodiscard]] double frequency() const { return m_frequency; }
  void setFrequency(double frequency) { m_frequency = frequency; }
  /// The distance of two points. Must be above zero: with any other there is no end to the line, and none is
  /// drawn.
  [[nodiscard]] double density() const { return m_density; }
  void setDensity(double density) { m_density = density; }
  /// Radians added to the phase with each level.
  [[nodiscard]] double phaseShift() const { return m_phaseShift; }
  void setPhaseShift(double shift) { m_phaseShift = shift; }

  /// What a drawing strokes for wave `wave` (0 is the first), in the upward axis.
  [[nodiscard]] QPolygonF points(std::int64_t wave) const;

  /// Clears the view, fills `rect` and draws the waves.
  void drawRect(QPainter &painter, const QRect &rect);

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  double m_phase = 0.0;  // radians
  double m_amplitude = 0.3;
  QColor m_waveColor = Qt::black;
  std::int64_t m_numberOfWaves = 5;
  double m_primaryWaveLineWidth = 3.0;
  double m_secondaryWaveLineWidth = 1.0;
  double m_idleAmplitude = 0.01;
  double m_frequency = 1.25;
  double m_density = 5.0;
  double m_phaseShift = -0.15;
};

}  // namespace velmora
