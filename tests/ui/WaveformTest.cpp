// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

#include "support/EventLoop.h"
#include "ui/waveform/SpeechWaveformView.h"
#include "ui/waveform/WaveformView.h"

namespace velmora {
namespace {

using std::numbers::pi;

constexpr QRect kFrame(0, 0, 400, 100);

QImage canvas(double scale = 1) {
  QImage image(kFrame.size() * scale, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::transparent);
  return image;
}

void draw(SpeechWaveformView &view, QImage &image) {
  QPainter painter(&image);
  view.drawRect(painter);
}

void draw(WaveformView &view, QImage &image) {
  QPainter painter(&image);
  view.drawRect(painter, view.rect());
}

/// The centre of what is painted in the column, in pixels from above, and how much is painted in all.
struct Ink {
  double y = 0;
  double amount = 0;
};
Ink ink(const QImage &image, int x, const std::function<double(QRgb)> &weight) {
  Ink found;
  for (int y = 0; y < image.height(); ++y) {
    const double here = weight(image.pixel(x, y));
    found.amount += here;
    found.y += here * (y + 0.5);
  }
  found.y /= found.amount;
  return found;
}
double opacity(QRgb pixel) { return qAlpha(pixel) / 255.0; }

TEST(Waveform, TheSpeechWaveIsTheGivenCurve) {
  SpeechWaveformView view;
  view.setGeometry(kFrame);
  view.setFrequency(1);
  view.setPhaseShift(-pi / 2);
  QImage image = canvas();
  for (const double phase : {0.0, -pi / 2}) {
    const double normed[] = {0.7, 0.45, 0.2, -0.05, -0.3, -0.55};
    for (int wave = 0; wave < 6; ++wave) {
      const QPolygonF points = view.points(wave);
      ASSERT_EQ(points.size(), 401) << "from 0 to the width, both included";
      EXPECT_NEAR(points.first().y(), 50, 1e-9);
      EXPECT_NEAR(points.last().y(), 50, 1e-9);
      for (const int x : {50, 100, 200, 300}) {
        const double parabola = 1 - std::pow((x - 200) / 200.0, 2);
        EXPECT_EQ(points[x].x(), x);
        EXPECT_NEAR(points[x].y(), 50 + std::sin(2 * pi * x / 400 + phase) * parabola * 48.5 * normed[wave],
                    1e-9)
            << wave << ' ' << x;
      }
    }
    draw(view, image);  // which moves the phase on for the second round
  }
}

TEST(Waveform, TheLevelWaveIsTheGivenCurveInSinglePrecision) {
  WaveformView view;
  view.setGeometry(kFrame);
  view.updateWithLevel(1);
  QImage image = canvas();
  draw(view, image);  // leaves the phase alone
  const double normed[] = {1.0, 0.7, 0.4, 0.1, -0.2};
  for (int wave = 0; wave < 5; ++wave) {
    const QPolygonF points = view.points(wave);
    ASSERT_EQ(points.size(), 81);
    EXPECT_NEAR(points.first().y(), 50, 1e-9);
    EXPECT_NEAR(points.last().y(), 50, 1e-9);
    for (int i = 0; i < 81; ++i) {
      const double x = 5.0 * i;
      const double parabola = 1 - std::pow((x - 200) / 200, 2);
      const float sine = std::sin(static_cast<float>(2 * pi * 1.25 * x / 400 - 0.15));
      EXPECT_NEAR(points[i].y(), 50 + static_cast<double>(sine) * parabola * 46 * normed[wave], 1e-9);
    }
  }
  // A step that is no binary fraction gathers its error by addition.
  view.setDensity(0.1);
  EXPECT_EQ(view.points(0)[10].x(), 0.9999999999999999);
  SpeechWaveformView speech;
  speech.setGeometry(kFrame);
  speech.setDensity(0.1);
  EXPECT_EQ(speech.points(0)[10].x(), 1.0) << "the other view multiplies";
}

TEST(Waveform, LevelsHaveALowerBoundAndMoveThePhaseInOneViewOnly) {
  struct Case {
    double set;
    double kept;
  };
  for (const Case &c : {Case{0, 0.01}, {0.01, 0.01}, {0.5, 0.5}, {-3, 0.01}, {7, 7}}) {
    SpeechWaveformView speech;
    speech.setGeometry(kFrame);
    speech.setAmplitude(1);
    const QPolygonF before = speech.points(0);
    speech.setAmplitude(c.set);
    EXPECT_EQ(speech.amplitude(), c.kept);
    speech.setAmplitude(1);
    EXPECT_EQ(speech.points(0), before) << "only drawing moves the phase of this view";
    WaveformView level;
    level.setGeometry(kFrame);
    level.updateWithLevel(c.set);
    EXPECT_EQ(level.amplitude(), c.kept);
    level.updateWithLevel(1);
    EXPECT_NEAR(level.points(0)[40].y(), 50 + 46 * std::sin(2 * pi * 1.25 / 2 - 0.3), 1e-4);
  }
  SpeechWaveformView none;
  none.setGeometry(kFrame);
  none.setNumberOfWaves(0);
  QImage image = canvas();
  draw(none, image);
  EXPECT_EQ(image, canvas());
  none.setNumberOfWaves(1);
  EXPECT_NEAR(none.points(0)[200].y(), 50 + 48.5 * 0.7 * std::sin(pi * 1.5 - 0.15), 1e-9);
}

TEST(Waveform, PixelsAreWhereTheCurveIs) {
  // A quarter of a turn on, one period has its crest above the centre of the view, or below.
  for (const bool mirrored : {false, true}) {
    for (const double scale : {1.0, 2.0}) {
      SpeechWaveformView view;
      view.setGeometry(kFrame);
      view.setFrequency(1);
      view.setPhaseShift(-pi / 2);
      view.setNumberOfWaves(0);
      QImage image = canvas(scale);
      draw(view, image);  // to the quarter
      view.setNumberOfWaves(mirrored ? 6 : 1);
      draw(view, image);
      const auto at = [&](int x) { return static_cast<int>(x * scale); };
      // sin(pi - pi / 2) is 1: the first wave's crest is 48.5 * 0.7 above the centre, the last one's 48.5 *
      // 0.55 below.
      const auto upper = [&] {
        QImage half = image.copy(0, 0, image.width(), image.height() / 2);
        return ink(half, at(200), opacity);
      }();
      if (!mirrored) {
        EXPECT_NEAR(upper.y / scale, 50 - 48.5 * 0.7, 0.5);
        EXPECT_NEAR(upper.amount / scale, 1.5, 0.15) << "the line's width";
      } else {
        const auto lower = ink(image.copy(0, image.height() * 7 / 10, image.width(), image.height() * 3 / 10),
                               at(200), opacity);
        EXPECT_NEAR(lower.y / scale + 70, 50 + 48.5 * 0.55, 0.5);
        EXPECT_NEAR(lower.amount / scale, 0.5 * 0.4444, 0.05) << "the width times the alpha of the last wave";
      }
      for (const int x : {0, 399}) EXPECT_NEAR(ink(image, at(x), opacity).y / scale, 50, 1) << x;
    }
  }
}

TEST(Waveform, ColoursFadeInOneViewAndNotInTheOther) {
  SpeechWaveformView speech;
  speech.setWaveColor(QColor(10, 20, 30, 128));
  const double multipliers[] = {1.0, 0.8889, 0.7778, 0.6667, 0.5556, 0.4444};
  for (int wave = 0; wave < 6; ++wave) {
    EXPECT_NEAR(speech.color(wave).alphaF(), 128 / 255.0 * multipliers[wave], 1e-4);
    EXPECT_EQ(speech.color(wave).blue(), 30);
  }
  WaveformView level;
  level.setGeometry(kFrame);
  level.setFrequency(1);
  level.setPhaseShift(pi / 2);
  level.setWaveColor(QColor(255, 0, 0, 128));
  level.updateWithLevel(1);
  QImage image = canvas();
  image.fill(Qt::green);
  draw(level, image);
  const auto red = [](QRgb pixel) { return qRed(pixel) / 128.0; };
  // sin(pi + pi / 2) is -1: the first wave is below the centre, the last one mirrored above it, as strong.
  EXPECT_NEAR(ink(image.copy(0, 90, 400, 10), 200, red).amount, 3, 0.2);
  const auto mirrored = ink(image.copy(0, 0, 400, 50), 200, red);
  EXPECT_NEAR(mirrored.amount, 1, 0.1);
  EXPECT_NEAR(mirrored.y, 50 - 46 * 0.2, 0.5);
  EXPECT_EQ(image.pixelColor(200, 20), Qt::black) << "what was there is cleared, and the view filled";
}

TEST(Waveform, OnlyTheFatalIsFatal) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  QImage image = canvas();
  SpeechWaveformView speech;
  WaveformView level;
  speech.setGeometry(kFrame);
  level.setGeometry(kFrame);
  const double infinite = std::numeric_limits<double>::infinity();
  for (const double strange : {std::nan(""), infinite, -infinite, 1e300}) {
    speech.setAmplitude(strange);
    level.updateWithLevel(strange);
    draw(speech, image);
    draw(level, image);
  }
  for (const double density : {-5.0, std::nan("")}) {
    speech.setDensity(density);
    level.setDensity(density);
    EXPECT_TRUE(speech.points(0).isEmpty());
    EXPECT_TRUE(level.points(0).isEmpty());
  }
  level.setDensity(0);
  speech.setDensity(0);
  draw(level, image);
  EXPECT_DEATH(draw(speech, image), "the density of a wave is zero");
  speech.setNumberOfWaves(0);
  draw(speech, image);
  speech.setNumberOfWaves(-1);
  EXPECT_DEATH(draw(speech, image), "the number of waves is negative");
  level.setNumberOfWaves(-1);
  EXPECT_DEATH(draw(level, image), "the number of waves is negative");
}

/// What of a view was last painted anew.
class Repaints : public QObject {
 public:
  QRect area;
  bool eventFilter(QObject *, QEvent *event) override {
    if (event->type() == QEvent::Paint) area = static_cast<QPaintEvent *>(event)->rect();
    return false;
  }
};

TEST(Waveform, ANewLevelAsksForTheFrameInTheViewsOwnAxis) {
  QWidget parent;
  parent.resize(300, 200);
  SpeechWaveformView speech(&parent);
  speech.setGeometry(40, 70, 200, 100);  // 30 above the lower edge
  Repaints repaints;
  speech.installEventFilter(&repaints);
  parent.show();
  ASSERT_TRUE(tests::runUntil([&] { return !repaints.area.isEmpty(); }));
  repaints.area = {};
  speech.setAmplitude(0.5);
  ASSERT_TRUE(tests::runUntil([&] { return !repaints.area.isEmpty(); }));
  EXPECT_EQ(repaints.area, QRect(40, 0, 160, 70));
}

}  // namespace
}  // namespace velmora
