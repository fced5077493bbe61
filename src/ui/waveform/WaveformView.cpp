// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/waveform/WaveformView.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

#include "ui/UpwardAxis.h"
#include "ui/waveform/Wave.h"

namespace velmora {

namespace {
constexpr double kOffset = -0.5;
constexpr double kMargin = 4.0;  // whatever the width of the strokes
}  // namespace

WaveformView::WaveformView(QWidget *parent) : QWidget(parent) {}

void WaveformView::updateWithLevel(double level) {
  m_phase += m_phaseShift;
  m_amplitude = std::max(level, m_idleAmplitude);
  update();
}

QPolygonF WaveformView::points(std::int64_t wave) const {
  const double amplitude = normedAmplitude(waveProgress(wave, m_numberOfWaves), kOffset, m_amplitude);
  const Wave formula({static_cast<double>(width()), static_cast<double>(height()), m_frequency, m_phase,
                      (height() * 0.5 - kMargin) * amplitude});
  const double end = width() + m_density;
  QPolygonF points;
  if (!(m_density > 0)) return points;
  points.reserve(static_cast<int>(std::clamp(end / m_density + 1, 1.0, 1e5)));
  // The abscissa is accumulated and the sine has single precision: a level needs no more.
  double x = 0;
  while (x < end) {
    const float sine = std::sin(static_cast<float>(formula.angle(x)));
    points.append(formula.point(x, static_cast<double>(sine)));
    x += m_density;
  }
  return points;
}

void WaveformView::drawRect(QPainter &painter, const QRect &rect) {
  painter.setCompositionMode(QPainter::CompositionMode_Source);
  painter.fillRect(this->rect(), Qt::transparent);
  painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
  // No fill colour is chosen: that of a fresh context is opaque black.
  painter.fillRect(rect, Qt::black);
  requireWaves(m_numberOfWaves);
  turnUpward(painter, height());
  painter.setRenderHint(QPainter::Antialiasing);
  for (std::int64_t wave = 0; wave < m_numberOfWaves; ++wave) {
    strokeWave(painter, points(wave), m_waveColor,
               wave == 0 ? m_primaryWaveLineWidth : m_secondaryWaveLineWidth);
  }
}

void WaveformView::paintEvent(QPaintEvent *event) {
  QPainter painter(this);
  drawRect(painter, event->rect());
}

}  // namespace velmora
