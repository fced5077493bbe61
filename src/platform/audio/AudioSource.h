// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the audio of a turn comes from when it is no microphone: 16-bit mono samples at 16 kHz, frame by
// frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>

namespace velmora {

/// Says in one line which audio cannot be used and why.
class AudioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What sound needs is not installed: nothing can be done about any of it.
class NoSound : public AudioError {
 public:
  using AudioError::AudioError;
};

/// The audio is longer than `AudioSource::longestSeconds`; what was read of it so far is good.
class AudioTooLong : public AudioError {
 public:
  using AudioError::AudioError;
};

/// What one read brought.
struct AudioRead {
  std::size_t samples = 0;  ///< how many samples of the frame were filled
  bool ended = false;       ///< nothing follows; a frame that was not filled is the last one
};

/// A source belongs to one thread at a time.
class AudioSource {
 public:
  static constexpr int sampleRate = 16000;            ///< Hz
  static constexpr std::size_t frameSamples = 1600;   ///< 100 ms, what is sent at a time
  static constexpr std::size_t longestSeconds = 600;  ///< longer audio is refused: it is no utterance

  AudioSource() = default;
  virtual ~AudioSource() = default;
  AudioSource(const AudioSource &) = delete;
  AudioSource &operator=(const AudioSource &) = delete;

  /// Fills `frame`, waiting for as long as that takes. Without a full frame and without an end, the wait was
  /// broken off, no sample is lost and the next read goes on. Throws `AudioError`.
  [[nodiscard]] virtual AudioRead read(std::span<std::int16_t> frame) = 0;
};

}  // namespace velmora
