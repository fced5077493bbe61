// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPolygonF>
#include <QWidget>
#include <cstdint>

namespace velmora {

/// The speech wave: a bundle of fading sine waves whose height follows `amplitude`, and which moves on by
/// `phaseShift` with each drawing. Owns no timer: a new amplitude asks for a new frame, nothing else does.
/// Lengths are logical pixels. Main thread.
class SpeechWaveformView : public QWidget {
  Q_OBJECT

 public:
  explicit SpeechWaveformView(QWidget *parent = nullptr);

  /// Sine periods across the width.
  [[nodiscard]] double frequency() const { return m_frequency; }
  void setFrequency(double frequency) { m_frequency = frequency; }
  /// The lower bound of `amplitude`.
  [[nodiscard]] double idleAmplitude() const { return m_idleAmplitude; }
  void setIdleAmplitude(double amplitude) { m_idleAmplitude = amplitude; }
  /// Radians added to the phase after each drawing.
  [[nodiscard]] double phaseShift() const { return m_phaseShift; }
  void setPhaseShift(double shift) { m_phaseShift = shift; }
  /// The distance of two points. Zero is fatal when a wave is drawn; a negative one draws no wave.
  [[nodiscard]] double density() const { return m_density; }
  void setDensity(double density) { m_density = density; }
  /// The stroke of the first wave, which is also the margin above and below.
  [[nodiscard]] double primaryLineWidth() const { return m_primaryLineWidth; }
  void setPrimaryLineWidth(double width) { m_primaryLineWidth = width; }
  [[nodiscard]] double secondaryLineWidth() const { return m_secondaryLineWidth; }
  void setSecondaryLineWidth(double width) { m_secondaryLineWidth = width; }
  /// A negative number is fatal when the view is drawn.
  [[nodiscard]] std::int64_t numberOfWaves() const { return m_numberOfWaves; }
  void setNumberOfWaves(std::int64_t number) { m_numberOfWaves = number; }
  [[nodiscard]] const QColor &waveColor() const { return m_waveColor; }
  void setWaveColor(const QColor &color) { m_waveColor = color; }

  /// The level, 0 to 1 in normal use, never below `idleAmplitude` as it was when the level was set.
  [[nodiscard]] double amplitude() const { return m_amplitude; }
  /// Asks for a redraw of the rectangle that is the view's frame in its parent: what of the view that does
  /// not cover stays as it is, unless the view sits in its parent's lower left corner.
  void setAmplitude(double amplitude);

  /// What the next drawing strokes for wave `wave` (0 is the first), in the upward axis.
  [[nodiscard]] QPolygonF points(std::int64_t wave) const;
  /// The colour of that stroke.
  [[nodiscard]] QColor color(std::int64_t wave) const;

  /// Draws the waves and moves the phase on.
  void drawRect(QPainter &painter);

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  double m_frequency = 1.5;
  double m_idleAmplitude = 0.01;
  double m_phaseShift = -0.15;
  double m_density = 1.0;
  double m_primaryLineWidth = 1.5;
  double m_secondaryLineWidth = 0.5;
  std::int64_t m_numberOfWaves = 6;
  QColor m_waveColor = Qt::white;
  double m_amplitude = 1.0;
  double m_phase = 0.0;  // radians
};

}  // namespace velmora
