// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/TurnRecorder.h"

namespace velmora {

using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;

void TurnRecorder::begin() {
  const std::lock_guard lock(m_mutex);
  m_record = {};
}

TurnRecorder::Record TurnRecorder::record() const {
  const std::lock_guard lock(m_mutex);
  return m_record;
}

bool TurnRecorder::wantsNoMoreAudio() const {
  const std::lock_guard lock(m_mutex);
  return m_record.utteranceEnded || m_record.result.has_value();
}

bool TurnRecorder::hasEnded() const {
  const std::lock_guard lock(m_mutex);
  return m_record.result.has_value();
}

void TurnRecorder::stopListening() {
  {
    const std::lock_guard lock(m_mutex);
    m_record.utteranceEnded = true;
  }
  m_wake.wake();
}

void TurnRecorder::playResponse(const std::string &mp3) {
  const std::lock_guard lock(m_mutex);
  m_record.audio = mp3;
}

/// The texts are taken from here and not from the delegate's calls, whose answer line falls back to a
/// placeholder with every piece of sound.
void TurnRecorder::responseReceived(const Response &response) {
  const auto now = Clock::now();
  const Result result = response.result();
  const bool sound = !response.audioOut().audioData().empty();
  const std::lock_guard lock(m_mutex);
  if (response.eventType() == Response::EventType::endOfUtterance && !m_record.endOfUtterance) {
    m_record.endOfUtterance = now;
  }
  if (sound && !m_record.firstAudio) m_record.firstAudio = now;
  if (!result.spokenRequestText().empty()) m_record.request = result.spokenRequestText();
  if (!result.spokenResponseText().empty()) m_record.answer = result.spokenResponseText();
  m_record.followOn = result.microphoneMode() == Result::MicrophoneMode::dialogFollowOn;
  m_record.answered = m_record.answered || sound || !m_record.request.empty() || !m_record.answer.empty();
}

void TurnRecorder::turnEnded(const CallResult &result) {
  {
    const std::lock_guard lock(m_mutex);
    m_record.ended = Clock::now();
    m_record.result = result;
  }
  m_wake.wake();
}

}  // namespace velmora
