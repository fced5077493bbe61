// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/audio/AudioSource.h"
#include "platform/process/WakePipe.h"
#include "tools/TurnRecorder.h"

namespace velmora {

/// What a turn asks of the conversation engine.
class TurnEngine {
 public:
  virtual ~TurnEngine() = default;
  virtual void beginTurn(std::int32_t volumePercentage) = 0;
  virtual void sendAudioFrame(const std::int16_t *samples, std::ptrdiff_t count) = 0;
  virtual void endAudio() = 0;
};

/// What became of a turn.
struct Turn {
  enum class Outcome {
    answered,
    refused,      ///< the service, or the way to it, ended the call with an error
    unanswered,   ///< the service ended the call in good order and had said nothing
    timedOut,     ///< the service kept silent
    interrupted,  ///< the user ended it
    noAudio       ///< the audio could not be read
  };

  Outcome outcome = Outcome::answered;
  std::string request{};
  std::string answer{};
  std::string audio{};  ///< the spoken answer, MP3
  bool followOn = false;
  /// How long no audio had come from the source when the service ended the call while waiting for more.
  std::optional<std::chrono::seconds> stalled{};
  /// The call's gRPC status. Where there was none: 4 timed out, 1 interrupted, 3 no audio.
  int status = 0;
  std::optional<std::string> statusMessage{};
  // Milliseconds from the last audio frame sent; absent when it did not happen or no frame was sent.
  std::optional<double> endOfUtterance{};
  std::optional<double> firstAudio{};
  std::optional<double> done{};
};

/// Runs one turn from the first frame to the end of the call.
class ConverseTurn {
 public:
  struct Settings {
    std::int32_t volume = 100;
    bool fast = false;                          ///< send without pause instead of a frame every 100 ms
    std::chrono::milliseconds timeout{30'000};  ///< from the last frame to the end of the call
  };

  /// `wake` is woken by the recorder and whenever `interrupted` may have changed its mind.
  ConverseTurn(TurnEngine &engine, TurnRecorder &recorder, const WakePipe &wake,
               std::function<bool()> interrupted, const Settings &settings);

  /// Sends the audio and waits for the end of the call. Returns early, with the call still open, when the
  /// turn timed out, was interrupted or has no more audio to read.
  [[nodiscard]] Turn run(AudioSource &source);

 private:
  using Clock = TurnRecorder::Clock;

  void sendAudio(AudioSource &source);
  void sendFrames(AudioSource &source);
  void endAudio();
  AudioRead readFrame(AudioSource &source, std::span<std::int16_t> frame);
  [[nodiscard]] bool endedByService() const;
  void waitForFrame(Clock::time_point due) const;
  [[nodiscard]] bool stopped() const { return m_interrupted() || m_recorder.wantsNoMoreAudio(); }
  [[nodiscard]] Turn turn(Turn::Outcome outcome, const std::string &why) const;

  TurnEngine &m_engine;
  TurnRecorder &m_recorder;
  const WakePipe &m_wake;
  std::function<bool()> m_interrupted;
  Settings m_settings;
  std::optional<Clock::time_point> m_lastFrame;
  std::optional<std::chrono::seconds> m_stalled;
};

}  // namespace velmora
