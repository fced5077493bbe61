// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "engine/Capture.h"
#include "platform/audio/AudioSource.h"
#include "platform/process/WakePipe.h"

namespace velmora {

/// The microphones that there are, a line each: name, description and, for the one that is heard when none is
/// chosen, "default", with tabs between. Throws `AudioError` when there is none, or no sound server.
[[nodiscard]] std::string describeMicrophones();

/// The microphone as the audio of one turn after the other.
class MicrophoneSource final : public AudioSource {
 public:
  /// Takes the microphone of this name, absent: the user's default. A read is broken off while
  /// `wakeDescriptor` is readable. Throws `AudioError` when there is none, or no sound server.
  MicrophoneSource(const std::optional<std::string> &device, int wakeDescriptor);

  /// Hears from now on; what was heard before is forgotten.
  void begin();
  /// Hears nothing any more.
  void end();

  /// Throws `AudioError` when nothing comes for five seconds, and beyond `longestSeconds`.
  [[nodiscard]] AudioRead read(std::span<std::int16_t> frame) override;

 private:
  using Clock = WakePipe::Clock;

  void take(const std::int16_t *samples, std::ptrdiff_t count);
  std::size_t deliver(std::span<std::int16_t> frame);
  [[nodiscard]] bool waitForNews(Clock::time_point deadline) const;

  const int m_wakeDescriptor;
  const WakePipe m_news;  // samples have come
  std::size_t m_delivered = 0;
  std::mutex m_mutex;
  std::vector<std::int16_t> m_heard;  // and not yet read; guarded by m_mutex
  Capture m_capture{[this](const std::int16_t *samples, std::ptrdiff_t count) { take(samples, count); }};
};

}  // namespace velmora
