// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/VoiceLine.h"

#include <unistd.h>

#include <utility>

namespace velmora {

VoiceLine::VoiceLine(const std::optional<std::string> &device, const WakePipe &wake,
                     std::function<bool()> interrupted, bool quiet)
    : m_wake(wake),
      m_interrupted(std::move(interrupted)),
      m_microphone(device, wake.descriptor()),
      m_meter(quiet ? -1 : STDERR_FILENO) {}

void VoiceLine::listen() {
  m_microphone.begin();
  m_playback.playStartPrompt();
}

void VoiceLine::stopListening() {
  m_microphone.end();
  m_meter.clear();
}

AudioRead VoiceLine::read(std::span<std::int16_t> frame) {
  const AudioRead read = m_microphone.read(frame);
  m_meter.show(frame.first(read.samples));
  return read;
}

void VoiceLine::speak(const std::string &mp3) {
  m_playback.playResponse(mp3);
  while (m_isSpeaking && !m_interrupted()) m_wake.waitUntil(std::nullopt);
  if (m_isSpeaking) m_playback.stopSpeaking();
}

void VoiceLine::speakerIcon(bool isShown) {
  m_isSpeaking = isShown;
  if (!isShown) m_wake.wake();
}

}  // namespace velmora
