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

/// How much of a column is coloured, in pixels, partly covered ones in proportion.
double heightAt(const QImage &image, int x) {
  double sum = 0;
  for (int y = 0; y < image.height(); ++y) sum += qAlpha(image.pixel(x, y)) / 255.0;
  return sum;
}

double coloured(const QImage &image) {
  double sum = 0;
  for (int x = 0; x < image.width(); ++x) sum += heightAt(image, x);
  return sum;
}

/// The first half is `left`, the second `right`.
std::vector<float> halves(float left, float right, std::size_t count = 1000) {
  std::vector<float> samples(count, left);
  std::fill(samples.begin() + static_cast<std::ptrdiff_t>(count / 2), samples.end(), right);
  return samples;
}

struct FilledPlot : AudioPlot {
  FilledPlot() {
    resize(kWidth, kHeight);
    setShouldFill(true);
    setShouldMirror(true);
  }
};

TEST(AudioPlot, FillsBetweenTheSignalAndItsMirrorImage) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  constexpr float infinity = std::numeric_limits<float>::infinity();
  const struct {
    std::vector<float> samples;
    double left, right;  // of the height
  } cases[] = {{halves(0.5F, -0.25F), 0.5, 0.25},
               {halves(nan, infinity), 0, 1},
               {halves(0.5F, -0.25F, 20), 0.5, 0.25},  // fewer than pixels
               {{0.5F}, 0.5, 0.5}};
  for (const auto &one : cases) {
    for (const int scale : {1, 2}) {
      SCOPED_TRACE(::testing::Message() << "case " << &one - cases << ", scale " << scale);
      FilledPlot plot;
      plot.updateBuffer(one.samples);
      const QImage image = pictureOf(plot, scale);
      const int above = (image.height() - scale) / 2;  // whole rows
      EXPECT_NEAR(heightAt(image, image.width() / 4), 2 * above * one.left + scale, 0.12);
      EXPECT_NEAR(heightAt(image, image.width() * 3 / 4), 2 * above * one.right + scale, 0.12);
    }
  }
}

TEST(AudioPlot, LosesNoPeakAndIsSharpOnADenseScreen) {
  FilledPlot plot;
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
