// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One frame of each wave view and of the popover's bubble into a picture in memory, as a window's backing
// store is one: ours beside QPainter called bare with the same strokes, whose points are there beforehand.
// Names pair up: `speech/bare` and `speech/velmora` paint the same pixels.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <vector>

#include "ui/UpwardAxis.h"
#include "ui/popover/INPopoverWindowFrame.h"
#include "ui/waveform/SpeechWaveformView.h"
#include "ui/waveform/WaveformView.h"

namespace {

using namespace velmora;

constexpr QSize kSize(400, 100);

QImage picture() {
  QImage image(kSize, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

struct Stroke {
  QPolygonF points;
  QPen pen;
};

QPen penFor(const QColor &color, double width) {
  QPen pen(color, width, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
  pen.setMiterLimit(10);
  return pen;
}

void strokeBare(QPainter &painter, const std::vector<Stroke> &strokes) {
  turnUpward(painter, kSize.height());
  painter.setRenderHint(QPainter::Antialiasing);
  for (const Stroke &stroke : strokes) {
    painter.setPen(stroke.pen);
    painter.drawPolyline(stroke.points);
  }
}

void speechBare(benchmark::State &state) {
  SpeechWaveformView view;
  view.resize(kSize);
  std::vector<Stroke> strokes;
  for (int wave = 0; wave < view.numberOfWaves(); ++wave)
    strokes.push_back({view.points(wave), penFor(view.color(wave), wave == 0 ? 1.5 : 0.5)});
  QImage image = picture();
  for (auto _ : state) {
    QPainter painter(&image);
    strokeBare(painter, strokes);
  }
}
BENCHMARK(speechBare)->Name("speech/bare")->Unit(benchmark::kMicrosecond);

void speechVelmora(benchmark::State &state) {
  SpeechWaveformView view;
  view.resize(kSize);
  view.setPhaseShift(0);
  QImage image = picture();
  for (auto _ : state) {
    QPainter painter(&image);
    view.drawRect(painter);
  }
}
BENCHMARK(speechVelmora)->Name("speech/velmora")->Unit(benchmark::kMicrosecond);

void levelBare(benchmark::State &state) {
  WaveformView view;
  view.resize(kSize);
  view.setWaveColor(Qt::white);
  std::vector<Stroke> strokes;
  for (int wave = 0; wave < view.numberOfWaves(); ++wave)
    strokes.push_back({view.points(wave), penFor(view.waveColor(), wave == 0 ? 3 : 1)});
  QImage image = picture();
  for (auto _ : state) {
    QPainter painter(&image);
    painter.fillRect(image.rect(), Qt::black);
    strokeBare(painter, strokes);
  }
}
BENCHMARK(levelBare)->Name("level/bare")->Unit(benchmark::kMicrosecond);

void levelVelmora(benchmark::State &state) {
  WaveformView view;
  view.resize(kSize);
  view.setWaveColor(Qt::white);
  QImage image = picture();
  for (auto _ : state) {
    QPainter painter(&image);
    view.drawRect(painter, view.rect());
  }
}
BENCHMARK(levelVelmora)->Name("level/velmora")->Unit(benchmark::kMicrosecond);

void setUp(INPopoverWindowFrame &frame) {
  frame.resize(kSize);
  frame.setColor(Qt::black);
  frame.setBorderColor(Qt::white);
  frame.setBorderWidth(1);
  frame.setArrowDirection(ArrowDirection::up);
}

void bubbleBare(benchmark::State &state) {
  INPopoverWindowFrame frame;
  setUp(frame);
  const QPolygonF outline = frame.outline().toFillPolygon();
  const QPen pen(Qt::white, 1, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
  QImage image = picture();
  for (auto _ : state) {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawPolygon(outline);
    painter.setPen(pen);
    painter.drawPolyline(outline);
  }
}
BENCHMARK(bubbleBare)->Name("bubble/bare")->Unit(benchmark::kMicrosecond);

void bubbleVelmora(benchmark::State &state) {
  INPopoverWindowFrame frame;
  setUp(frame);
  QImage image = picture();
  for (auto _ : state) {
    QPainter painter(&image);
    frame.drawRect(painter);
  }
}
BENCHMARK(bubbleVelmora)->Name("bubble/velmora")->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
