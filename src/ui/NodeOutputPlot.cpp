// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/NodeOutputPlot.h"

#include <QTimerEvent>
#include <algorithm>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/Microphone.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;

constexpr auto kFrame = 16ms;    // 60 frames a second
constexpr auto kSilent = 300ms;  // without a buffer: a microphone that is gone is no frozen picture

}  // namespace

NodeOutputPlot::NodeOutputPlot(Microphone &node, const QRect &frame, QWidget *parent, int bufferSize)
    : AudioPlot(parent),
      m_node(node),
      m_window(static_cast<std::size_t>(std::max(2, bufferSize))),
      m_heard(m_window, 0) {
  setGeometry(frame);
}

void NodeOutputPlot::showEvent(QShowEvent *event) {
  AudioPlot::showEvent(event);
  m_number = m_node.newest().number;  // what was heard before is over
  m_heard.assign(m_window, 0);
  m_shownUpTo = m_window;
  updateBuffer(m_heard);
  m_frames.start(static_cast<int>(kFrame.count()), Qt::PreciseTimer, this);
}

void NodeOutputPlot::hideEvent(QHideEvent *event) {
  m_frames.stop();
  AudioPlot::hideEvent(event);
}

void NodeOutputPlot::timerEvent(QTimerEvent *event) {
  if (event->timerId() != m_frames.timerId()) return AudioPlot::timerEvent(event);
  takeNewest();
  showMoment();
}

void NodeOutputPlot::takeNewest() {
  const auto now = Clock::now();
  const Microphone::Newest newest = m_node.newest();
  const bool isNew = newest.number != m_number;
  if (!isNew && (m_heard.size() == m_window || now - m_came < kSilent)) return;
  m_number = newest.number;
  m_came = now;
  m_heard.erase(m_heard.begin(), m_heard.end() - static_cast<std::ptrdiff_t>(m_window));
  if (isNew && !newest.samples.empty()) {
    m_heard.insert(m_heard.end(), newest.samples.begin(), newest.samples.end());
  } else {
    std::fill(m_heard.begin(), m_heard.end(), 0.0F);
  }
  m_shownUpTo = 0;
}

void NodeOutputPlot::showMoment() {
  static const double rate = AudioEngine::inputFormat().sampleRate;
  const double heard = std::chrono::duration<double>(Clock::now() - m_came + kFrame).count() * rate;
  const std::size_t upTo = std::min(m_heard.size(), m_window + static_cast<std::size_t>(heard));
  if (upTo == m_shownUpTo) return;
  m_shownUpTo = upTo;
  updateBuffer(std::span(m_heard).subspan(upTo - m_window, m_window));
}

}  // namespace velmora
