// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the plots draw, pixel by pixel.
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <cmath>
#include <thread>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/Microphone.h"
#include "support/EventLoop.h"
#include "support/SoundServer.h"
#include "ui/NodeOutputPlot.h"

namespace velmora {
namespace {

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

TEST(AudioPlot, LosesNoPeakAndIsSharpOnADenseScreen) {
  AudioPlot plot;
  plot.resize(100, 80);
  plot.setShouldFill(true);
  plot.setShouldMirror(true);
  for (const std::size_t at : {3000U, 3001U, 3017U, 6999U}) {
    std::vector<float> samples(10'000, 0);
    samples[at] = -1;
    plot.updateBuffer(samples);
    const QImage image = pictureOf(plot, 2);
    const int x = static_cast<int>(at / 50);  // 200 pixels wide
    EXPECT_GT(std::max({heightAt(image, x - 1), heightAt(image, x), heightAt(image, x + 1)}), 80) << at;
    for (const int column : {x - 3, x + 3}) EXPECT_NEAR(heightAt(image, column), 2, 0.1) << "is blurred";
  }
  for (const std::size_t count : {20U, 1U}) {  // fewer than pixels
    plot.updateBuffer(std::vector<float>(count, 0.5F));
    for (const int column : {0, 99, 199})
      EXPECT_NEAR(heightAt(pictureOf(plot, 2), column), 81, 0.1) << column << " of " << count;
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
  EXPECT_TRUE(tests::runUntil([&] { return std::abs(area() - flat) < 1; })) << "after the last word";
  speaker.join();
  server.plugHum("hum");
  server.setDefaultMicrophone("hum");
  EXPECT_TRUE(tests::runUntil([&] { return area() > 2 * flat; }));
  // Between two buffers it moves; one picture more may be that of a buffer which has come before.
  EXPECT_TRUE(tests::runUntil([&] {
    const auto number = microphone.newest().number;
    for (int picture = 0; picture < 2; ++picture) {
      const QImage before = pictureOf(plot);
      if (!tests::runUntil([&] { return pictureOf(plot) != before; })) return false;
    }
    return microphone.newest().number == number;
  }));
  server.kill();
  EXPECT_TRUE(tests::runUntil([&] { return std::abs(area() - flat) < 1; })) << "no frozen picture";
}

}  // namespace
}  // namespace velmora
