// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Hearing the user: what a screen captures and sends to its conversation.
//
//   Capture capture([&](const std::int16_t *samples, std::ptrdiff_t count) {
//     api.sendAudioFrame(samples, count);
//   });
//   if (!Capture::hasInputDevice()) alertWithoutInputDevice();
//   capture.setUp();
//   api.beginTurn(capture.volumePercentage());
//   capture.start();
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/audio/AudioConverter.h"
#include "platform/audio/AudioEngine.h"
#include "platform/audio/Microphone.h"

namespace velmora {

/// The microphone as frames of 1600 16-bit mono samples at 16 kHz, ten a second. What is not said to be
/// otherwise may be called on any thread.
class Capture {
 public:
  /// Takes the samples of one frame, which are the capture's again when it returns. On the audio thread.
  using Send = std::function<void(const std::int16_t *samples, std::ptrdiff_t count)>;

  explicit Capture(Send send);
  /// Stops. Not within `send`.
  ~Capture();
  Capture(const Capture &) = delete;
  Capture &operator=(const Capture &) = delete;

  /// Whether there is anything to hear with. Waits up to a quarter of a second for a server that is frozen.
  [[nodiscard]] static bool hasInputDevice();
  /// Selects the current input device and taps it; both last over stops and starts. Once. Waits likewise.
  void setUp();

  /// Does not wait for the microphone: while there is none, nothing comes.
  void start() { m_engine.start(); }
  /// No frame comes any more when it returns. Not while a lock is held that `send` takes.
  void stop() { m_engine.stop(); }
  [[nodiscard]] bool isListening() const { return m_engine.isRunning(); }

  /// How loud the answer to what is heard is asked for. Fatal when the microphone's volume is beyond all
  /// numbers.
  [[nodiscard]] std::int32_t volumePercentage() const;

  [[nodiscard]] AudioEngine &engine() { return m_engine; }
  /// For the plot, and for the volume.
  [[nodiscard]] Microphone &mic() { return m_mic; }

 private:
  void onTap(const PCMBuffer &buffer);

  const Send m_send;
  const AudioFormat m_nativeFormat;
  const AudioFormat m_desiredFormat;
  // On the audio thread only, made by its first buffer.
  std::optional<AudioConverter> m_converter;
  std::optional<PCMBuffer> m_outputBuffer;
  AudioEngine m_engine;
  Microphone m_mic{m_engine};
};

}  // namespace velmora
