// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>
#include <limits>
#include <numbers>

#include "support/EventLoop.h"
#include "ui/waveform/SpeechWaveformView.h"
#include "ui/waveform/WaveformView.h"

namespace velmora {
namespace {

using std::numbers::pi;

constexpr QRect kFrame(0, 0, 400, 100);

template <typename View>
QImage drawn(View &view) {
  view.setGeometry(kFrame);
  QImage image(kFrame.size(), QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::blue);
  QPainter painter(&image);
  if constexpr (std::is_same_v<View, WaveformView>) {
    view.drawRect(painter, view.rect());
  } else {
    view.drawRect(painter);
  }
  return image;
}

/// How many pixels of the middle column are red at most two from `row`, parts of one included.
double redAround(double row, const QImage &image) {
  double amount = 0;
  for (int y = static_cast<int>(row) - 2; y <= static_cast<int>(row) + 2; ++y)
    amount += qRed(image.pixel(200, y)) / 255.0;
  return amount;
}

/// Whether a wave is a sine of `periods` that begins at `phase`, `height` high amid the view.
void expectCurve(const QPolygonF &points, int step, double periods, double phase, double height) {
  ASSERT_EQ(points.size(), 400 / step + 1) << "from 0 to the width, both included";
  for (int i = 0; i < points.size(); ++i) {
    const double x = step * i;
    const double parabola = 1 - std::pow((x - 200) / 200, 2);
    EXPECT_NEAR(points[i].x(), x, 1e-9);
    EXPECT_NEAR(points[i].y(), 50 + std::sin(2 * pi * periods * x / 400 + phase) * parabola * height, 1e-4);
  }
}

TEST(Waveform, IsTheGivenCurve) {
  SpeechWaveformView speech;
  speech.setFrequency(1);
  speech.setPhaseShift(-pi / 2);
  speech.setGeometry(kFrame);
  for (const double phase : {0.0, -pi / 2}) {
    int wave = 0;
    for (const double normed : {0.7, 0.45, 0.2, -0.05, -0.3, -0.55})
      expectCurve(speech.points(wave++), 1, 1, phase, 48.5 * normed);
    speech.setAmplitude(1);
    drawn(speech);  // which alone moves the phase on
  }
  WaveformView level;
  level.updateWithLevel(1);  // which alone moves the phase on here
  drawn(level);
  int wave = 0;
  for (const double normed : {1.0, 0.7, 0.4, 0.1, -0.2})
    expectCurve(level.points(wave++), 5, 1.25, -0.15, 46 * normed);
}

TEST(Waveform, IsDrawnWhereTheCurveIs) {
  // One period across the view and a quarter of one on: the crests are in the middle column.
  SpeechWaveformView speech;
  speech.setFrequency(1);
  speech.setPhaseShift(-pi / 2);
  speech.setWaveColor(Qt::red);
  drawn(speech);  // to the quarter
  const QImage waves = drawn(speech);
  EXPECT_NEAR(redAround(50 - 48.5 * 0.7, waves), 1.5, 0.15) << "the line's width";
  EXPECT_NEAR(redAround(50 + 48.5 * 0.55, waves), 0.5 * 0.4444, 0.05) << "the last one, mirrored and faint";

  WaveformView level;
  level.setFrequency(1);
  level.setPhaseShift(pi / 2);
  level.setWaveColor(Qt::red);
  level.updateWithLevel(1);
  const QImage image = drawn(level);
  EXPECT_NEAR(redAround(50 + 46, image), 3, 0.2);
  EXPECT_NEAR(redAround(50 - 46 * 0.2, image), 1, 0.1) << "the last one is no fainter here";
  EXPECT_EQ(image.pixelColor(200, 20), Qt::black) << "what was there is cleared";
}

TEST(Waveform, OnlyTheFatalIsFatal) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  SpeechWaveformView speech;
  WaveformView level;
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double strange : {std::nan(""), infinite, 1e300, -3.0}) {
    speech.setAmplitude(strange);
    level.updateWithLevel(strange);
    drawn(speech);
    drawn(level);
  }
  EXPECT_EQ(speech.amplitude(), 0.01);
  EXPECT_EQ(level.amplitude(), 0.01);
  for (const double density : {-5.0, std::nan("")}) {
    speech.setDensity(density);
    level.setDensity(density);
    EXPECT_TRUE(speech.points(0).isEmpty() && level.points(0).isEmpty());
  }
  level.setDensity(0);
  drawn(level);
  speech.setDensity(0);
  EXPECT_DEATH(drawn(speech), "the density of a wave is zero");
  speech.setNumberOfWaves(0);
  drawn(speech);
  speech.setNumberOfWaves(-1);
  EXPECT_DEATH(drawn(speech), "the number of waves is negative");
}

TEST(Waveform, ANewLevelAsksForTheFrameInTheViewsOwnAxis) {
  struct View : SpeechWaveformView {
    using SpeechWaveformView::SpeechWaveformView;
    void paintEvent(QPaintEvent *event) override { painted = event->rect(); }
    QRect painted;
  };
  QWidget parent;
  parent.resize(300, 200);
  View view(&parent);
  view.setGeometry(40, 70, 200, 100);  // 30 above the lower edge
  parent.show();
  ASSERT_TRUE(tests::runUntil([&] { return !view.painted.isEmpty(); }));
  view.painted = {};
  view.setAmplitude(0.5);
  ASSERT_TRUE(tests::runUntil([&] { return !view.painted.isEmpty(); }));
  EXPECT_EQ(view.painted, QRect(40, 0, 160, 70));
}

}  // namespace
}  // namespace velmora
