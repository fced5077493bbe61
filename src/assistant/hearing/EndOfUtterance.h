// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Where a request begins and ends in a stream of samples, by its energy over the noise of the room.
//
//   EndOfUtterance detector;
//   while (!detector.hasEnded()) detector.feed(nextSamples());
//   if (detector.state() == EndOfUtterance::State::ended) recognise(detector.utterance() of the samples fed);
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velmora {

/// Follows one stream of 16 kHz mono 16-bit samples from its first sample to the end of the request in it.
/// How the stream is cut into pieces makes no difference. Not thread-safe; cheap to make, one for each
/// stream.
class EndOfUtterance {
 public:
  enum class State {
    listening,    ///< nobody has spoken yet
    speaking,     ///< a request has begun
    ended,        ///< a request lies in `utterance()`; samples fed from now on are ignored
    nothingSaid,  ///< the stream, or the patience, ended without speech; samples are ignored
  };

  struct Limits {
    std::chrono::milliseconds hangOver{700};   ///< silence that ends a request; people pause for up to 600 ms
    std::chrono::milliseconds patience{8000};  ///< how long to wait for speech
    std::chrono::milliseconds longest{20000};  ///< a request is cut here, so that babble ends some time
  };

  /// A range of the samples fed, counted from the first one.
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;  ///< one past the last sample
    bool operator==(const Range &) const = default;
  };

  EndOfUtterance() : EndOfUtterance(Limits()) {}
  explicit EndOfUtterance(const Limits &limits);

  /// Takes the next samples, any number of them, and returns the state after them.
  State feed(std::span<const std::int16_t> samples);
  /// The stream is over: a request that has begun ends here. Returns `ended` or `nothingSaid`.
  State finish();

  /// The request so far, while its speaker is silent: it stays the same until the request ends, or speech
  /// goes on. Long enough before the end to find out meanwhile what was said.
  [[nodiscard]] std::optional<Range> pausedUtterance() const;
  /// How long the speaker has been silent, 0 while there is no pause.
  [[nodiscard]] std::chrono::milliseconds pause() const;
  /// Says that the request before the present pause is complete, so that less silence ends it. Nothing when
  /// there is no pause. Returns the state.
  State shortenPause(std::chrono::milliseconds hangOver);

  [[nodiscard]] State state() const { return m_state; }
  [[nodiscard]] bool hasEnded() const { return m_state == State::ended || m_state == State::nothingSaid; }

  /// The request, up to 300 ms before it and 180 ms after it, for the recogniser; empty unless the state is
  /// `ended`. It lies within the samples fed.
  [[nodiscard]] Range utterance() const { return m_utterance; }

 private:
  void takeFrame(double level);
  void markVoiced();
  [[nodiscard]] std::size_t voicedAmongLast(std::size_t frames) const;
  [[nodiscard]] bool roomIsKnown() const;
  void lookForSpeech();
  void followPause();
  void endIfPausedEnough();
  [[nodiscard]] Range rangeTo(std::size_t frame) const;
  void end(std::size_t frame);

  const Limits m_limits;
  State m_state = State::listening;
  Range m_utterance;
  std::vector<std::int16_t> m_rest;      // samples that do not fill a frame yet
  std::vector<double> m_levels;          // of every frame, in dBFS; the limits bound how many there are
  std::vector<bool> m_voiced;            // of every frame
  std::vector<double> m_noise;           // the levels of the last frames with any sound, a ring
  std::size_t m_oldestNoise = 0;         // where the ring is written next, once it is full
  double m_threshold = 0.0;              // in dBFS, over the noise as far as it is known
  std::size_t m_firstVoiced = 0;         // the frame with which the speech begins
  std::optional<std::size_t> m_pause;    // the frame with which the silence after it begins
  std::chrono::milliseconds m_hangOver;  // of this pause
};

}  // namespace velmora
