// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>
#include <cstddef>
#include <span>
#include <vector>

namespace velmora {

/// Draws a signal over its whole area, the oldest sample at the left, full scale at the edges. Nothing is
/// drawn before the first samples; silence is a thin line. Main thread.
class AudioPlot : public QWidget {
  Q_OBJECT

 public:
  enum class PlotType {
    buffer = 0,  ///< the samples last given
    rolling = 1  ///< the loudness of what was given since the last `clear()`, the newest at the right
  };

  explicit AudioPlot(QWidget *parent = nullptr);

  [[nodiscard]] PlotType plotType() const { return m_plotType; }
  void setPlotType(PlotType type);
  /// Fills the area between the signal and the middle; otherwise the signal is a line.
  [[nodiscard]] bool shouldFill() const { return m_shouldFill; }
  void setShouldFill(bool fill);
  /// Draws the signal upside down as well.
  [[nodiscard]] bool shouldMirror() const { return m_shouldMirror; }
  void setShouldMirror(bool mirror);
  [[nodiscard]] QColor color() const { return m_color; }
  void setColor(const QColor &color);
  /// Transparent by default: what is behind the plot shows.
  [[nodiscard]] QColor backgroundColor() const { return m_backgroundColor; }
  void setBackgroundColor(const QColor &color);
  /// What samples are multiplied by before they are drawn; 1 by default. What exceeds full scale is cut.
  [[nodiscard]] float gain() const { return m_gain; }
  void setGain(float gain);
  /// Draws at the pace of the screen however often samples come, as by default; otherwise at once each time.
  [[nodiscard]] bool shouldOptimizeForRealtimePlot() const { return m_shouldOptimize; }
  void setShouldOptimizeForRealtimePlot(bool optimize) { m_shouldOptimize = optimize; }

  /// Takes one channel of samples, full scale 1, and copies them.
  void updateBuffer(std::span<const float> samples);
  /// Back to nothing.
  void clear();

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  /// Where silence is, how far full scale is from it, and how thick it is drawn; in pixels of the screen.
  struct Middle {
    float middle, reach, line;
  };

  [[nodiscard]] std::vector<float> signal(std::size_t columns) const;
  void fillArea(const std::vector<float> &values, int rows, const Middle &in);

  PlotType m_plotType = PlotType::buffer;
  bool m_shouldFill = false;
  bool m_shouldMirror = false;
  bool m_shouldOptimize = true;
  QColor m_color = Qt::black;
  QColor m_backgroundColor = Qt::transparent;
  float m_gain = 1;
  QImage m_picture;              // of the signal, kept for its memory
  std::vector<float> m_samples;  // the newest, or the loudness so far
};

}  // namespace velmora
