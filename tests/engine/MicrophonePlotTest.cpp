// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/MicrophonePlot.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/Microphone.h"
#include "ui/CustomPlot.h"

namespace velmora {
namespace {

TEST(MicrophonePlot, FillsItsViewChangesItsColourAndLetsClicksThrough) {
  AudioEngine engine;
  Microphone microphone(engine);
  CustomPlot view;
  view.resize(300, 60);
  int clicks = 0;
  view.setClickListener([&](QMouseEvent &) { ++clicks; });
  view.show();
  MicrophonePlot plot(microphone, view);
  auto *const drawn = view.findChild<NodeOutputPlot *>();
  ASSERT_NE(drawn, nullptr);
  EXPECT_FALSE(drawn->isVisible());
  plot.setHidden(false);
  view.resize(500, 60);
  QApplication::processEvents();
  EXPECT_EQ(drawn->geometry(), QRect(0, 0, 500, 60));
  EXPECT_TRUE(drawn->isVisible() && drawn->shouldFill() && drawn->shouldMirror());
  for (const std::size_t next : {0U, 1U, 2U, 3U, 0U, 1U}) {
    EXPECT_EQ(drawn->color(), MicrophonePlot::googleColors.at(next));
    plot.updatePlotWaveformColor();
  }
  QMouseEvent press(QEvent::MouseButtonPress, {9, 9}, {9, 9}, Qt::LeftButton, Qt::LeftButton, {});
  QApplication::sendEvent(drawn, &press);
  EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace velmora
