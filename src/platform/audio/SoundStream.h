// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/audio/SoundConnection.h"

namespace velmora {

/// One stream of samples from or to the sound server. On the sound thread only, its owner's methods as well.
class SoundStream {
 public:
  /// Hears what happens to the stream, and may destroy it when it is moved, drained or has failed.
  class Owner {
   public:
    /// The stream runs, on `device`.
    virtual void streamOpened(const std::string & /*device*/) {}
    /// The server put the stream on another device.
    virtual void streamMoved(const std::string & /*device*/) {}
    /// Samples of a microphone. A null pointer stands for silence.
    virtual void streamCaptured(const float * /*samples*/, std::size_t /*count*/) {}
    /// There is room for so many bytes.
    virtual void streamWants(std::size_t /*bytes*/) {}
    /// What was written has been heard.
    virtual void streamDrained() {}
    /// The stream is dead; nothing follows.
    virtual void streamFailed(const std::string &reason) = 0;

   protected:
    ~Owner() = default;
  };

  /// What to hear: a device, or the server's choice for an empty name. Only a `fixed` stream stays on it
  /// whatever others wish, and fails when it goes.
  struct Source {
    std::string device;
    bool fixed = false;
    bool operator==(const Source &) const = default;
  };

  /// Hears mono floats that come `frames` at a time or less. Throws `AudioError`; what the server refuses
  /// comes as `streamFailed`.
  static std::unique_ptr<SoundStream> capture(SoundConnection &connection, Owner &owner, const Source &source,
                                              int sampleRate, std::uint32_t frames);
  /// Plays interleaved 16-bit samples on the user's default. Throws `AudioError` likewise.
  static std::unique_ptr<SoundStream> playback(SoundConnection &connection, Owner &owner, int sampleRate,
                                               int channels);

  /// Falls silent at once.
  virtual ~SoundStream() = default;
  SoundStream(const SoundStream &) = delete;
  SoundStream &operator=(const SoundStream &) = delete;

  /// Whole frames, at most what was wanted.
  virtual void write(std::span<const std::int16_t> samples) = 0;
  /// Asks for `streamDrained`; to be called once, after the last `write`.
  virtual void drain() = 0;

 protected:
  SoundStream() = default;
};

}  // namespace velmora
