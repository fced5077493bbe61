// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QImage>
#include <numbers>

#include "ui/waveform/SpeechWaveformView.h"
#include "ui/waveform/WaveformView.h"

namespace velmora {
namespace {

/// How many pixels of the middle column are red at most two from `row`, parts of one included.
double redAround(double row, QWidget &view) {
  QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::black);
  view.render(&image, {}, {}, {});
  double amount = 0;
  for (int y = static_cast<int>(row) - 2; y <= static_cast<int>(row) + 2; ++y)
    amount += qRed(image.pixel(200, y)) / 255.0;
  return amount;
}

// One period across the view and a quarter of one on: the crests are in the middle column.

TEST(Waveform, OfSpeechIsDrawnWhereTheCurveIs) {
  SpeechWaveformView view;
  view.resize(400, 100);
  view.setWaveColor(Qt::red);
  view.setFrequency(1);
  view.setPhaseShift(-std::numbers::pi / 2);
  redAround(50, view);  // moves it on
  view.setPhaseShift(0);
  EXPECT_NEAR(redAround(50 - 48.5 * 0.7, view), 1.5, 0.15) << "the line's width";
  EXPECT_NEAR(redAround(50 + 48.5 * 0.55, view), 0.5 * 0.4444, 0.05) << "the last one, mirrored and faint";
}

TEST(Waveform, OfALevelIsDrawnWhereTheCurveIs) {
  WaveformView view;
  view.resize(400, 100);
  view.setWaveColor(Qt::red);
  view.setFrequency(1);
  view.setPhaseShift(std::numbers::pi / 2);
  view.updateWithLevel(1);
  EXPECT_NEAR(redAround(50 + 46, view), 3, 0.2);
  EXPECT_NEAR(redAround(50 - 46 * 0.2, view), 1, 0.1) << "the last one is no fainter here";
}

}  // namespace
}  // namespace velmora
