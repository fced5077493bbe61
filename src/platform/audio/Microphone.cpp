// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/Microphone.h"

#include "platform/audio/AudioEngine.h"

namespace velmora {

Microphone::Microphone(AudioEngine &engine) : m_engine(engine) { m_engine.attach(*this); }

Microphone::~Microphone() { m_engine.detach(*this); }

void Microphone::take(std::span<const float> samples) {
  Slot &slot = m_slots[m_written];
  slot.samples.assign(samples.begin(), samples.end());
  slot.number = ++m_count;
  m_written = m_passed.exchange(m_written | kFresh) & ~kFresh;
}

Microphone::Newest Microphone::newest() {
  if (m_passed.load() & kFresh) m_read = m_passed.exchange(m_read) & ~kFresh;
  return {.samples = m_slots[m_read].samples, .number = m_slots[m_read].number};
}

}  // namespace velmora
