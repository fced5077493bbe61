// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace velmora {

enum class SpeechEncoding {
  linear16,  ///< 16-bit little-endian samples
  mp3,       ///< as `Mp3Encoder` makes it
};

/// Speaks `text` at `volumePercent` and gives the sound to `send` in pieces of a network packet or so,
/// sentence by sentence: the first piece is there while most of a long text is still to be spoken. Mono at
/// `kSpeechRate`. Any thread. Throws `std::runtime_error` when it fails, and what `send` throws.
void streamSpeech(std::string_view text, int volumePercent, SpeechEncoding encoding,
                  const std::function<void(std::string bytes)> &send);

}  // namespace velmora
