// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/MicrophonePlot.h"

#include <QVBoxLayout>
#include <chrono>

#include "ui/CustomPlot.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

constexpr auto kColorTime = 750ms;

}  // namespace

// Full colours, a little lighter where they would drown in a dark background.
const std::array<QColor, 4> MicrophonePlot::googleColors{QColor(0xf0, 0x45, 0x3a), QColor(0x4a, 0x8d, 0xf8),
                                                         QColor(0xf8, 0xc1, 0x2c), QColor(0x3c, 0xb4, 0x5f)};

MicrophonePlot::MicrophonePlot(Microphone &mic, CustomPlot &waveformView)
    : m_plot(new NodeOutputPlot(mic, waveformView.rect(), &waveformView)) {
  m_plot->hide();
  m_plot->setShouldFill(true);
  m_plot->setShouldMirror(true);
  m_plot->setColor(googleColors.front());
  m_plot->setBackgroundColor(Qt::transparent);
  m_plot->setShouldOptimizeForRealtimePlot(true);
  m_plot->setPlotType(AudioPlot::PlotType::buffer);
  auto *const layout = new QVBoxLayout(&waveformView);  // follows the view's size
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(m_plot);
  m_colors.callOnTimeout([this] { updatePlotWaveformColor(); });
}

MicrophonePlot::~MicrophonePlot() { delete m_plot; }

void MicrophonePlot::setHidden(bool hidden) {
  if (m_plot) m_plot->setHidden(hidden);
  // Nobody is woken for what nobody sees.
  if (hidden) {
    m_colors.stop();
  } else if (!m_colors.isActive()) {
    m_colors.start(kColorTime);
  }
}

void MicrophonePlot::updatePlotWaveformColor() {
  if (m_plot) m_plot->setColor(googleColors.at(m_colorChangingIndex));
  m_colorChangingIndex = (m_colorChangingIndex + 1) % googleColors.size();
}

}  // namespace velmora
