// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/Capture.h"

#include <cmath>
#include <utility>

#include "engine/AudioConstants.h"
#include "foundation/Log.h"
#include "foundation/fatal.h"
#include "platform/audio/AudioSource.h"

namespace velmora {

Capture::Capture(Send send)
    : m_send(std::move(send)),
      m_nativeFormat(AudioEngine::inputFormat()),
      m_desiredFormat{.sampleType = SampleType::int16, .sampleRate = kServiceSampleRate} {}

Capture::~Capture() { stop(); }

bool Capture::hasInputDevice() {
  const auto devices = AudioEngine::inputDevices();
  return devices && !devices->empty();
}

void Capture::setUp() {
  try {
    if (const auto device = m_engine.inputDevice()) m_engine.setInputDevice(*device);
  } catch (const AudioError &) {
    // It went between the two calls; the default is heard.
  }
  m_engine.installTap(kNativeFramesPerBuffer,
                      [this](const PCMBuffer &buffer, const AudioTime & /*time*/) { onTap(buffer); });
}

void Capture::onTap(const PCMBuffer &buffer) {
  try {
    if (!m_converter) m_converter.emplace(m_nativeFormat, m_desiredFormat);
    if (!m_outputBuffer) m_outputBuffer.emplace(m_desiredFormat, kServiceFramesPerBuffer);
    m_converter->convert(*m_outputBuffer, [&buffer](AudioConverter::InputStatus &status) {
      status = AudioConverter::InputStatus::haveData;
      return &buffer;
    });
  } catch (const AudioError &error) {
    log("Conversion error ", error.what());
    return;
  }
  m_send(m_outputBuffer->int16ChannelData(), m_outputBuffer->frameLength());
}

std::int32_t Capture::volumePercentage() const {
  // Hundredths are not exact: 0.57 is 57 %.
  return exactly<std::int32_t>(std::round(m_mic.volume() * 1e4) / 100,
                               "The microphone's volume cannot be asked for");
}

}  // namespace velmora
