// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/AudioPlot.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace velmora {
namespace {

constexpr std::size_t kRollingLength = 512;  // buffers that a rolling plot shows

float loudness(std::span<const float> samples) {
  const float squares = std::inner_product(samples.begin(), samples.end(), samples.begin(), 0.0F);
  return samples.empty() ? 0 : std::sqrt(squares / static_cast<float>(samples.size()));
}

/// The sample furthest from silence.
float peak(std::span<const float> samples) {
  return *std::max_element(samples.begin(), samples.end(),
                           [](float one, float other) { return std::abs(one) < std::abs(other); });
}

}  // namespace

AudioPlot::AudioPlot(QWidget *parent) : QWidget(parent) {}

void AudioPlot::setPlotType(PlotType type) {
  if (std::exchange(m_plotType, type) != type) clear();
}

void AudioPlot::setShouldFill(bool fill) {
  m_shouldFill = fill;
  update();
}

void AudioPlot::setShouldMirror(bool mirror) {
  m_shouldMirror = mirror;
  update();
}

void AudioPlot::setColor(const QColor &color) {
  m_color = color;
  update();
}

void AudioPlot::setBackgroundColor(const QColor &color) {
  m_backgroundColor = color;
  update();
}

void AudioPlot::setGain(float gain) {
  m_gain = gain;
  update();
}

void AudioPlot::updateBuffer(std::span<const float> samples) {
  if (m_plotType == PlotType::buffer) {
    m_samples.assign(samples.begin(), samples.end());
  } else {
    if (m_samples.empty()) m_samples.assign(kRollingLength, 0);
    std::shift_left(m_samples.begin(), m_samples.end(), 1);
    m_samples.back() = loudness(samples);
  }
  if (m_shouldOptimize) {
    update();
  } else {
    repaint();
  }
}

void AudioPlot::clear() {
  m_samples.clear();
  update();
}

/// A point for each sample, or for each pixel of the screen where there are more samples than that: the
/// loudest of those that share it, so that no peak is lost. Heights are multiples of half the plot's.
QPolygonF AudioPlot::outline(double scale) const {
  const std::size_t pixels = static_cast<std::size_t>(std::max(2.0, std::ceil(width() * scale)));
  const std::size_t count = std::min(m_samples.size(), pixels);
  QPolygonF points;
  points.reserve(static_cast<qsizetype>(count));
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t first = i * m_samples.size() / count;
    const std::size_t last = (i + 1) * m_samples.size() / count;
    float sample = peak(std::span(m_samples).subspan(first, last - first)) * m_gain;
    if (!(std::abs(sample) <= 1)) sample = std::isnan(sample) ? 0 : std::copysign(1.0F, sample);
    const double x = count < 2 ? 0 : static_cast<double>(i) / static_cast<double>(count - 1);
    points << QPointF(x * width(), static_cast<double>(sample));
  }
  if (count == 1) points << QPointF(width(), points.first().y());
  return points;
}

void AudioPlot::paintEvent(QPaintEvent *event) {
  QPainter painter(this);
  if (m_backgroundColor.alpha() > 0) painter.fillRect(event->rect(), m_backgroundColor);
  if (m_samples.empty()) return;
  painter.setRenderHint(QPainter::Antialiasing);

  // Silence is a line of whole pixels of the screen: between two rows it would be a blur of both.
  const double scale = painter.deviceTransform().m11();
  const double rows = std::round(height() * scale);
  const double line = std::max(1.0, std::round(scale)) / scale;
  const double middle = std::floor((rows - line * scale) / 2) / scale + line / 2;
  const double reach = std::max(0.0, middle - line / 2);
  const QPolygonF signal = outline(scale);
  const auto draw = [&](double direction) {
    QPolygonF points = signal;
    for (QPointF &point : points) point.setY(middle - direction * reach * point.y());
    painter.drawPolyline(points);
  };
  if (!m_shouldFill) {
    painter.setPen(QPen(m_color, line));
    draw(1);
    if (m_shouldMirror) draw(-1);
    return;
  }
  // The line is part of the area, so that silence remains to be seen.
  QPolygonF area;
  area.reserve(2 * signal.size());
  for (const QPointF &point : signal) {
    const double up = m_shouldMirror ? std::abs(point.y()) : std::max(0.0, point.y());
    area << QPointF(point.x(), middle - reach * up - line / 2);
  }
  for (auto point = signal.crbegin(); point != signal.crend(); ++point) {
    const double down = m_shouldMirror ? std::abs(point->y()) : std::max(0.0, -point->y());
    area << QPointF(point->x(), middle + reach * down + line / 2);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(m_color);
  painter.drawPolygon(area);
}

}  // namespace velmora
