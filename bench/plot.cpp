// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One frame of the live plot, as the assistant's screen has it: 1024 new samples of speech-like noise, filled
// and mirrored, at 600x120 and on screens of twice and three times the density. "bare" is Qt alone filling an
// area of as many corners.
//
//   bench_plot [--benchmark_filter=...]      60 frames a second leave 16.7 ms for each
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <random>
#include <vector>

#include "ui/AudioPlot.h"

namespace {

constexpr int kWidth = 600;
constexpr int kHeight = 120;
constexpr std::size_t kSamples = 1024;

/// A second of low-passed noise that swells twice.
std::vector<float> speech() {
  std::mt19937 random(7);
  std::normal_distribution<float> noise(0, 0.25F);
  std::vector<float> samples(44100);
  float low = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    low += 0.2F * (noise(random) - low);
    samples[i] = low * 4 * std::abs(std::sin(static_cast<float>(i) / 7000));
  }
  return samples;
}

QImage screen(int density) {
  QImage image(kWidth * density, kHeight * density, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(density);
  return image;
}

void frame(benchmark::State &state) {
  velmora::AudioPlot plot;
  plot.resize(kWidth, kHeight);
  plot.setShouldFill(true);
  plot.setShouldMirror(true);
  plot.setColor(Qt::red);
  const std::vector<float> samples = speech();
  QImage image = screen(static_cast<int>(state.range(0)));
  std::size_t at = 0;
  for (auto run : state) {
    image.fill(Qt::transparent);
    plot.updateBuffer(std::span(samples).subspan(at, kSamples));
    plot.render(&image, {}, {}, QWidget::DrawChildren);
    at = (at + 735) % (samples.size() - kSamples);
  }
}
BENCHMARK(frame)->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMicrosecond);

void bare(benchmark::State &state) {
  const int density = static_cast<int>(state.range(0));
  const std::vector<float> samples = speech();
  QImage image = screen(density);
  const auto corners = std::min(kSamples, static_cast<std::size_t>(kWidth * density));
  std::size_t at = 0;
  for (auto run : state) {
    image.fill(Qt::transparent);
    QPolygonF area;
    area.reserve(static_cast<qsizetype>(2 * corners));
    for (std::size_t i = 0; i < 2 * corners; ++i) {
      const std::size_t sample = i < corners ? i : 2 * corners - 1 - i;
      const double height = std::abs(static_cast<double>(samples[at + sample])) * (i < corners ? 1 : -1);
      area << QPointF(static_cast<double>(sample) * kWidth / static_cast<double>(corners - 1),
                      kHeight / 2.0 * (1 - std::clamp(height, -1.0, 1.0)));
    }
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::red);
    painter.drawPolygon(area);
    painter.end();
    at = (at + 735) % (samples.size() - kSamples);
  }
}
BENCHMARK(bare)->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char **argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
