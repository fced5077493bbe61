// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velmora {

/// MP3 from memory as samples. One thread at a time.
class Mp3Decoder {
 public:
  /// What decodes.
  class Feed {
   public:
    virtual ~Feed() = default;
    [[nodiscard]] virtual int sampleRate() const = 0;
    [[nodiscard]] virtual int channels() const = 0;
    virtual std::size_t decode(std::span<std::int16_t> samples) = 0;
  };

  /// Looks at the first frames. Throws `AudioError` unless they are what they claim to be: MPEG layer 3,
  /// three frames (or all there are) that decode to one rate and channel count. Tags and a little junk may
  /// precede.
  explicit Mp3Decoder(std::shared_ptr<const std::string> bytes);
  Mp3Decoder(const Mp3Decoder &) = delete;
  Mp3Decoder &operator=(const Mp3Decoder &) = delete;

  [[nodiscard]] int sampleRate() const { return m_feed->sampleRate(); }  ///< Hz
  [[nodiscard]] int channels() const { return m_feed->channels(); }

  /// Fills `samples`, interleaved, and gives how many it could: less at the end. A file that was cut off ends
  /// with its last whole frame. Throws `AudioError` at a place that cannot be decoded, once the samples
  /// before it have been given.
  std::size_t decode(std::span<std::int16_t> samples) { return m_feed->decode(samples); }

 private:
  const std::unique_ptr<Feed> m_feed;
};

}  // namespace velmora
