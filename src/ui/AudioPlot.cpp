// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/AudioPlot.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

namespace velmora {
namespace {

constexpr std::size_t kRollingLength = 512;  // buffers that a rolling plot shows

/// Where the coloured area begins or ends in a column, in rows, and how much of a pixel it gains with each.
struct Edge {
  float at = 0;
  float perRow = 1;
};

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

/// The signal, -1 to 1, at each of so many columns: where samples share one it is the loudest of them, so
/// that no peak is lost; where there are fewer samples than columns it lies on a line between two.
std::vector<float> AudioPlot::signal(std::size_t columns) const {
  std::vector<float> values(columns);
  const std::size_t count = m_samples.size();
  for (std::size_t x = 0; x < columns; ++x) {
    float value = 0;
    if (count >= columns) {
      const std::size_t first = x * count / columns;
      value = peak(std::span(m_samples).subspan(first, (x + 1) * count / columns - first));
    } else {
      const float at =
          static_cast<float>(x) * static_cast<float>(count - 1) / static_cast<float>(columns - 1);
      const auto before = std::min(static_cast<std::size_t>(at), count - 1);
      const auto after = std::min(before + 1, count - 1);
      value = std::lerp(m_samples[before], m_samples[after], at - static_cast<float>(before));
    }
    value *= m_gain;
    values[x] = std::isnan(value) ? 0 : std::clamp(value, -1.0F, 1.0F);
  }
  return values;
}

void AudioPlot::paintEvent(QPaintEvent *event) {
  QPainter painter(this);
  if (m_backgroundColor.alpha() > 0) painter.fillRect(event->rect(), m_backgroundColor);
  const auto scale = static_cast<float>(painter.deviceTransform().m11());
  const auto columns = static_cast<int>(std::ceil(static_cast<float>(width()) * scale));
  const auto rows = static_cast<int>(std::ceil(static_cast<float>(height()) * scale));
  if (m_samples.empty() || columns < 2 || rows < 2) return;

  // Silence is a line of whole rows of the screen's pixels: between two it would be a blur of both.
  const float line = std::max(1.0F, std::round(scale));
  const float middle = std::floor((static_cast<float>(rows) - line) / 2) + line / 2;
  const float reach = std::max(0.0F, middle - line / 2);
  const std::vector<float> values = signal(static_cast<std::size_t>(columns));
  if (m_shouldFill) {
    fillArea(values, rows, {.middle = middle, .reach = reach, .line = line});
    m_picture.setDevicePixelRatio(static_cast<double>(scale));
    painter.drawImage(QPointF(0, 0), m_picture);
    return;
  }
  painter.setRenderHint(QPainter::Antialiasing);
  painter.scale(1 / static_cast<double>(scale), 1 / static_cast<double>(scale));
  painter.setPen(QPen(m_color, static_cast<double>(line)));
  for (const float direction : {1.0F, m_shouldMirror ? -1.0F : 1.0F}) {
    QPolygonF points;
    points.reserve(columns);
    for (const float value : values) {
      const auto x = static_cast<double>(points.size()) + 0.5;
      points << QPointF(x, static_cast<double>(middle - direction * reach * value));
    }
    painter.drawPolyline(points);
    if (!m_shouldMirror) return;
  }
}

/// Makes the picture of the area between the signal and the middle, row by row. This takes a fifth of the
/// time of a polygon of QPainter's, which has as many corners as the picture has columns.
void AudioPlot::fillArea(const std::vector<float> &values, int rows, const Middle &in) {
  const std::size_t columns = values.size();
  const QSize size(static_cast<int>(columns), rows);
  if (m_picture.size() != size) m_picture = QImage(size, QImage::Format_ARGB32_Premultiplied);

  // Each edge is a ramp as high as the signal is steep, and a pixel at least: it is smooth without a blur.
  std::vector<Edge> top(columns);
  std::vector<Edge> bottom(columns);
  const auto up = [&](std::size_t x) {
    return m_shouldMirror ? std::abs(values[x]) : std::max(0.0F, values[x]);
  };
  const auto down = [&](std::size_t x) {
    return m_shouldMirror ? std::abs(values[x]) : std::max(0.0F, -values[x]);
  };
  for (std::size_t x = 0; x < columns; ++x) {
    const std::size_t left = x > 0 ? x - 1 : x;
    const std::size_t right = std::min(x + 1, columns - 1);
    const auto perRow = [&](float one, float other) {
      return 1 / std::max(1.0F, in.reach * std::abs(one - other) / 2);
    };
    top[x] = {.at = in.middle - in.reach * up(x) - in.line / 2, .perRow = perRow(up(left), up(right))};
    bottom[x] = {.at = in.middle + in.reach * down(x) + in.line / 2,
                 .perRow = perRow(down(left), down(right))};
  }
  std::array<QRgb, 256> shades{};
  for (std::size_t alpha = 0; alpha < shades.size(); ++alpha) {
    QColor shade = m_color;
    shade.setAlphaF(m_color.alphaF() * static_cast<float>(alpha) / 255);
    shades.at(alpha) = qPremultiply(shade.rgba());
  }
  for (int y = 0; y < rows; ++y) {
    auto *const pixels = reinterpret_cast<QRgb *>(m_picture.scanLine(y));
    const float centre = static_cast<float>(y) + 0.5F;
    for (std::size_t x = 0; x < columns; ++x) {
      const float above = std::clamp((centre - top[x].at) * top[x].perRow + 0.5F, 0.0F, 1.0F);
      const float below = std::clamp((bottom[x].at - centre) * bottom[x].perRow + 0.5F, 0.0F, 1.0F);
      const float covered = std::max(0.0F, above + below - 1);
      pixels[x] = shades[static_cast<std::size_t>(covered * 255.99F)];
    }
  }
}

}  // namespace velmora
