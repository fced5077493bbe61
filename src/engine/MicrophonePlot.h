// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPointer>
#include <QTimer>
#include <array>
#include <cstddef>

#include "ui/NodeOutputPlot.h"

namespace velmora {

class CustomPlot;

/// The live plot of the microphone in a screen's view: it fills the view, lets clicks through to it, and
/// takes another colour every 0.75 s while it is shown. Hidden at first. Main thread.
class MicrophonePlot {
 public:
  static const std::array<QColor, 4> googleColors;  ///< red, blue, yellow, green

  /// The microphone outlives the object; the view may go before.
  MicrophonePlot(Microphone &mic, CustomPlot &waveformView);
  ~MicrophonePlot();
  MicrophonePlot(const MicrophonePlot &) = delete;
  MicrophonePlot &operator=(const MicrophonePlot &) = delete;

  void setHidden(bool hidden);
  /// The next colour, as the timer does.
  void updatePlotWaveformColor();

 private:
  QPointer<NodeOutputPlot> m_plot;  // the view's
  std::size_t m_colorChangingIndex = 1;
  QTimer m_colors;
};

}  // namespace velmora
