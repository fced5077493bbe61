// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The microphone, buffer by buffer.
//
//   AudioEngine engine;
//   engine.installTap(4410, [&](const PCMBuffer &buffer, const AudioTime &) { convertAndSend(buffer); });
//   engine.start();
//
// The state is what was asked for and what the world allows. The engine goes on its own way between waiting
// and running, with one line in the log for each trouble that stops it:
//
//   stopped --start()--> waiting --samples come--> running
//   running --microphone unplugged, server dead or silent for three seconds--> waiting
//   waiting, running --stop()--> stopped
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/audio/AudioDevice.h"
#include "platform/audio/PCMBuffer.h"

namespace velmora {

class Microphone;
class SoundConnection;

/// When a buffer was heard.
struct AudioTime {
  std::int64_t sampleTime = 0;  ///< of its first frame; counts what was delivered since start()
  std::chrono::steady_clock::time_point hostTime;  ///< when its last frame had come
};

/// No method waits for the sound server, unless it says so. All may be called on any thread, from within the
/// tap as well.
class AudioEngine {
 public:
  enum class State { stopped, waiting, running };
  using Tap = std::function<void(const PCMBuffer &buffer, const AudioTime &time)>;

  AudioEngine();
  /// Stops. Not within the tap.
  ~AudioEngine();
  AudioEngine(const AudioEngine &) = delete;
  AudioEngine &operator=(const AudioEngine &) = delete;

  /// What the tap gets: one channel of floats at 44100 Hz, whatever the microphone has.
  [[nodiscard]] static AudioFormat inputFormat();

  /// Begins to hear the selected input device. Nothing happens when it does already.
  void start();
  /// When it returns, no tap is under way and none comes any more; within the tap, none comes after that one.
  /// The caller must hold no lock that the tap takes.
  void stop();
  /// Whether it was started and not stopped: waiting for a microphone or a server counts.
  [[nodiscard]] bool isRunning() const { return state() != State::stopped; }
  [[nodiscard]] State state() const;

  /// The microphones that there are; absent while there is no sound server. Always the present ones, since
  /// the server tells of changes. Without a server it is looked for, which takes up to a quarter of a second
  /// when it is frozen.
  [[nodiscard]] static std::optional<std::vector<AudioDevice>> inputDevices();
  /// The selected one while it is there, else the user's default; absent when there is none. Waits likewise.
  [[nodiscard]] std::optional<AudioDevice> inputDevice() const;
  /// Selects, now and for the time when it comes back after it was unplugged; until then the default is
  /// heard. To select what is the default is to follow the user's default. Throws `AudioError` when there is
  /// no such device. Waits likewise.
  void setInputDevice(const AudioDevice &device);

  /// `tap` is given buffers of exactly `bufferSize` frames, in order, one at a time, on the audio thread,
  /// which does nothing else. When that is five seconds behind, the newest are dropped. Replaces an earlier
  /// tap, and lasts over stop and start. Throws `AudioError` for no frames.
  void installTap(std::uint32_t bufferSize, Tap tap);
  /// The earlier tap is not called any more when this returns, as with `stop()`.
  void removeTap();

 private:
  friend class Microphone;
  class Delivery;
  class Input;

  void attach(Microphone &microphone);
  void detach(Microphone &microphone);

  std::mutex m_control;  // held while a start or a stop is passed on, so that these come in one order
  const std::shared_ptr<SoundConnection> m_connection;
  const std::shared_ptr<Delivery> m_delivery;
  const std::unique_ptr<Input> m_input;
};

}  // namespace velmora
