// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>

#include "platform/audio/AudioSource.h"

namespace velmora {

/// An audio file of any rate, width and channel count as 16 kHz mono samples: the channels are averaged, the
/// rate is converted with 130 dB of signal to noise, what exceeds the 16-bit range saturates. A 16-bit mono
/// file at 16 kHz comes through unchanged. Converts while it is read, so that a long file takes no memory.
class AudioFile : public AudioSource {
 public:
  /// Opens the file and checks its header. Throws `AudioError` with the path for what is missing, unreadable,
  /// no regular file, no audio, without samples, or longer than `longestSeconds`.
  explicit AudioFile(const std::filesystem::path &path);
  ~AudioFile() override;

  /// Throws `AudioError` when the file turns out to be damaged.
  [[nodiscard]] AudioRead read(std::span<std::int16_t> frame) override;

 private:
  class Reader;
  std::unique_ptr<Reader> m_reader;
};

}  // namespace velmora
