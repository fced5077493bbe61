// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the plots draw, pixel by pixel.
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <cmath>
#include <limits>
#include <thread>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/Microphone.h"
#include "support/EventLoop.h"
#include "support/SoundServer.h"
#include "ui/NodeOutputPlot.h"

namespace velmora {
namespace {

constexpr int kWidth = 100;
constexpr int kHeight = 80;

QImage pictureOf(QWidget &widget, int scale = 1) {
  QImage image(widget.size() * scale, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(scale);
  image.fill(Qt::transparent);
  widget.render(&image, {}, {}, QWidget::DrawChildren);
  return image;
}

/// From where to where a column is coloured, in pixels, partly covered ones in proportion.
struct Extent {
  double top = 0;
  double bottom = 0;
  double covered = 0;  // of that
};
Extent extentAt(const QImage &image, int x) {
  Extent extent{.top = static_cast<double>(image.height())};
  for (int y = 0; y < image.height(); ++y) {
    const double covered = qAlpha(image.pixel(x, y)) / 255.0;
    if (covered == 0) continue;
    extent.top = std::min(extent.top, y + 1 - covered);
    extent.bottom = y + covered;
    extent.covered += covered;
  }
  return extent;
}
double heightAt(const QImage &image, int x) {
  const Extent extent = extentAt(image, x);
  return extent.bottom - extent.top;
}

double coloured(const QImage &image) {
  double sum = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) sum += qAlpha(image.pixel(x, y)) / 255.0;
  }
  return sum;
}

/// The first half is `left`, the second `right`.
std::vector<float> halves(float left, float right, std::size_t count = 1000) {
  std::vector<float> samples(count, left);
  std::fill(samples.begin() + static_cast<std::ptrdiff_t>(count / 2), samples.end(), right);
  return samples;
}

TEST(AudioPlot, DrawsTheSamplesAsItIsToldTo) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  constexpr float infinity = std::numeric_limits<float>::infinity();
  const struct {
    bool fill, mirror;
    float gain;
    std::vector<float> samples;
    Extent left, right;  // half heights from the middle, upwards
  } cases[] = {
      {true, true, 1, halves(0.5F, -0.25F), {0.5, -0.5}, {0.25, -0.25}},
      {true, false, 1, halves(0.5F, -0.25F), {0.5, 0}, {0, -0.25}},
      {false, false, 1, halves(0.5F, -0.25F), {0.5, 0.5}, {-0.25, -0.25}},
      {false, true, 1, halves(0.5F, -0.25F), {0.5, -0.5}, {0.25, -0.25}},
      {true, true, 4, halves(0.5F, -0.125F), {1, -1}, {0.5, -0.5}},
      {true, true, 1, halves(nan, infinity), {0, 0}, {1, -1}},
      {true, true, 1, halves(0.5F, -0.25F, 20), {0.5, -0.5}, {0.25, -0.25}},  // fewer than pixels
      {true, true, 1, {0.5F}, {0.5, -0.5}, {0.5, -0.5}},
  };
  for (const auto &one : cases) {
    const double near = one.fill ? 0.06 : 0.2;  // a thin line of Qt's is a little pale
    for (const int scale : {1, 2}) {
      SCOPED_TRACE(::testing::Message() << "case " << &one - cases << ", scale " << scale);
      AudioPlot plot;
      plot.resize(kWidth, kHeight);
      plot.setShouldFill(one.fill);
      plot.setShouldMirror(one.mirror);
      plot.setGain(one.gain);
      plot.updateBuffer(one.samples);
      const QImage image = pictureOf(plot, scale);
      const int above = (image.height() - scale) / 2;  // whole rows
      const double middle = above + scale / 2.0;
      for (const auto &[x, wanted] :
           {std::pair(kWidth / 4, one.left), std::pair(kWidth * 3 / 4, one.right)}) {
        const Extent drawn = extentAt(image, x * scale);
        EXPECT_NEAR(drawn.top, middle - above * wanted.top - scale / 2.0, near);
        EXPECT_NEAR(drawn.bottom, middle - above * wanted.bottom + scale / 2.0, near);
        const int lines = one.mirror ? 2 : 1;
        EXPECT_NEAR(drawn.covered, one.fill ? drawn.bottom - drawn.top : lines * scale, 2 * near);
      }
    }
  }
}

TEST(AudioPlot, LosesNoPeakAndIsSharpOnADenseScreen) {
  AudioPlot plot;
  plot.resize(kWidth, kHeight);
  plot.setShouldFill(true);
  plot.setShouldMirror(true);
  for (const std::size_t at : {3000U, 3001U, 3017U, 6999U}) {
    std::vector<float> samples(10'000, 0);
    samples[at] = -1;
    plot.updateBuffer(samples);
    const QImage image = pictureOf(plot, 2);
    const int x = static_cast<int>(at / 50);  // 200 pixels wide
    EXPECT_GT(std::max({heightAt(image, x - 1), heightAt(image, x), heightAt(image, x + 1)}), kHeight) << at;
    for (const int column : {x - 3, x + 3}) EXPECT_NEAR(heightAt(image, column), 2, 0.1) << "is blurred";
  }
}

TEST(AudioPlot, RollsTheLoudnessFromTheRight) {
  AudioPlot plot;
  plot.resize(512, kHeight);
  plot.setShouldFill(true);
  plot.setShouldMirror(true);
  plot.setPlotType(AudioPlot::PlotType::rolling);
  for (int i = 0; i < 100; ++i) plot.updateBuffer(halves(0.5F, -0.5F));
  for (int i = 0; i < 100; ++i) plot.updateBuffer(halves(0, 0));
  const QImage image = pictureOf(plot);
  for (const auto &[column, height] : {std::pair(250, 1), {362, 40}, {462, 1}})
    EXPECT_NEAR(heightAt(image, column), height, 1) << column;
  plot.clear();
  EXPECT_EQ(coloured(pictureOf(plot)), 0) << "no signal, no line";
}

TEST(NodeOutputPlot, ShowsWhatIsSaidWhileItIsSaid) {
  tests::SoundServer server;
  AudioEngine engine;
  Microphone microphone(engine);
  QWidget window;
  window.resize(600, 120);
  NodeOutputPlot plot(microphone, window.rect(), &window);
  plot.setShouldFill(true);
  plot.setShouldMirror(true);
  const auto area = [&] { return coloured(pictureOf(plot)); };
  window.show();
  const double flat = 600;
  EXPECT_NEAR(area(), flat, 1);
  engine.start();
  EXPECT_TRUE(tests::runUntil([&] { return engine.state() == AudioEngine::State::running; }));
  // Half of full scale all the time, so that every moment looks the same, but for its ends.
  std::thread speaker([&] {
    std::vector<std::int16_t> said(2 * 44100);
    for (std::size_t i = 0; i < said.size(); ++i) said[i] = i / 40 % 2 == 0 ? 16384 : -16384;
    server.say(said);
  });
  EXPECT_TRUE(tests::runUntil([&] { return std::abs(area() - (flat + 119 * 300)) < 2000; }));
  // Between two buffers it moves.
  EXPECT_TRUE(tests::runUntil([&] {
    const auto number = microphone.newest().number;
    const QImage before = pictureOf(plot);
    return tests::runUntil([&] { return pictureOf(plot) != before; }) && microphone.newest().number == number;
  }));
  EXPECT_TRUE(tests::runUntil([&] { return std::abs(area() - flat) < 1; })) << "after the last word";
  speaker.join();
  server.plugHum("hum");
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(tests::runUntil([&] { return area() > 2 * flat; }));
  server.kill();
  EXPECT_TRUE(tests::runUntil([&] { return std::abs(area() - flat) < 1; })) << "no frozen picture";
}

}  // namespace
}  // namespace velmora
