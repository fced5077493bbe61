// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/waveform/SpeechWaveformView.h"

#include <QPainter>
#include <algorithm>

#include "foundation/fatal.h"
#include "ui/UpwardAxis.h"
#include "ui/waveform/Wave.h"

namespace velmora {

namespace {
// Lets the last waves of a bundle get a negative amplitude: they mirror the first ones.
constexpr double kOffset = -0.8;
}  // namespace

SpeechWaveformView::SpeechWaveformView(QWidget *parent) : QWidget(parent) {}

void SpeechWaveformView::setAmplitude(double amplitude) {
  m_amplitude = amplitude;
  if (m_amplitude <= m_idleAmplitude) m_amplitude = m_idleAmplitude;
  // The frame and not the bounds, both measured upward from the lower left corner.
  const QWidget *parent = parentWidget();
  const QRectF frame = parent ? turned(geometry(), parent->height()) : QRectF(rect());
  update(turned(frame, height()).toAlignedRect());
}

QPolygonF SpeechWaveformView::points(std::int64_t wave) const {
  if (m_density == 0) fatal("the density of a wave is zero");
  const double amplitude = normedAmplitude(waveProgress(wave, m_numberOfWaves), kOffset, m_amplitude);
  const Wave formula({static_cast<double>(width()), static_cast<double>(height()), m_frequency, m_phase,
                      (height() * 0.5 - m_primaryLineWidth) * amplitude});
  const double end = width() + m_density;
  QPolygonF points;
  points.reserve(static_cast<int>(std::clamp(end / m_density + 1, 1.0, 1e5)));
  for (std::int64_t step = 0;; ++step) {
    const double x = static_cast<double>(step) * m_density;
    if (!(m_density > 0 ? x < end : x > end)) break;
    points.append(formula.point(x, std::sin(formula.angle(x))));
  }
  return points;
}

QColor SpeechWaveformView::color(std::int64_t wave) const {
  const double progress = waveProgress(wave, m_numberOfWaves);
  const double multiplier = std::min(progress / 3 + progress / 3 + 0.3333333333333333, 1.0);
  QColor color = m_waveColor;
  color.setAlphaF(static_cast<float>(m_waveColor.alphaF() * multiplier));
  return color;
}

void SpeechWaveformView::drawRect(QPainter &painter) {
  requireWaves(m_numberOfWaves);
  turnUpward(painter, height());
  painter.setRenderHint(QPainter::Antialiasing);
  for (std::int64_t wave = 0; wave < m_numberOfWaves; ++wave) {
    strokeWave(painter, points(wave), color(wave), wave == 0 ? m_primaryLineWidth : m_secondaryLineWidth);
  }
  m_phase += m_phaseShift;
}

void SpeechWaveformView::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  drawRect(painter);
}

}  // namespace velmora
