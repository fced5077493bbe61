// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QBasicTimer>
#include <chrono>
#include <cstdint>
#include <vector>

#include "ui/AudioPlot.h"

namespace velmora {

class Microphone;

/// The live signal of a microphone. Buffers come ten times a second; the plot runs through each at the pace
/// at which it was heard, so that every frame of the screen shows what is new. Works while it is visible
/// only. The audio thread never waits for it, nor it for the audio thread. Main thread.
class NodeOutputPlot : public AudioPlot {
  Q_OBJECT

 public:
  static constexpr int kDefaultBufferSize = 1024;

  /// Shows `bufferSize` samples at a time. The microphone outlives the plot, which is the only one of it:
  /// what is newest is told to one reader.
  NodeOutputPlot(Microphone &node, const QRect &frame, QWidget *parent, int bufferSize = kDefaultBufferSize);

 protected:
  void showEvent(QShowEvent *event) override;
  void hideEvent(QHideEvent *event) override;
  void timerEvent(QTimerEvent *event) override;

 private:
  using Clock = std::chrono::steady_clock;

  void takeNewest();
  void showMoment();

  Microphone &m_node;
  const std::size_t m_window;  // samples shown at a time
  QBasicTimer m_frames;
  // The end of what was heard before, as much as fills the window, and the newest buffer behind it.
  std::vector<float> m_heard;
  std::uint64_t m_number = 0;   // of the newest buffer
  Clock::time_point m_came;     // when it was first seen
  std::size_t m_shownUpTo = 0;  // how far into `m_heard`
};

}  // namespace velmora
