// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <string>

#include "engine/ResponsePlayback.h"
#include "tools/LevelMeter.h"
#include "tools/MicrophoneSource.h"

namespace velmora {

/// The ear and the mouth of a conversation in a terminal. One thread.
class VoiceLine final : public AudioSource, private ResponsePlaybackDelegate {
 public:
  /// `device` as for `MicrophoneSource`, whose errors it throws. `wake` is woken whenever `interrupted` may
  /// have changed its mind. The level is shown on standard error when that is a terminal, unless `quiet`.
  VoiceLine(const std::optional<std::string> &device, const WakePipe &wake, std::function<bool()> interrupted,
            bool quiet);

  /// Opens the microphone and says so with the start prompt.
  void listen();
  /// Closes it.
  void stopListening();
  /// Waits until an answer has been heard, cannot be, or the user ends it. What is no sound is passed over.
  void speak(const std::string &mp3);

  [[nodiscard]] AudioRead read(std::span<std::int16_t> frame) override;

 private:
  void speakerIcon(bool isShown) override;
  void continueIfFollowUp() override {}

  const WakePipe &m_wake;
  const std::function<bool()> m_interrupted;
  std::atomic<bool> m_isSpeaking = false;
  MicrophoneSource m_microphone;
  LevelMeter m_meter;
  ResponsePlayback m_playback{*this};
};

}  // namespace velmora
