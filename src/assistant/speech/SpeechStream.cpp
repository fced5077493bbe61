// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/SpeechStream.h"

#include <algorithm>
#include <utility>

#include "assistant/speech/Mp3Encoder.h"
#include "assistant/speech/SpokenText.h"
#include "assistant/speech/Voice.h"

namespace velmora {
namespace {

constexpr std::size_t kSamplesAPiece = kSpeechRate / 5;
constexpr std::size_t kMp3BytesAPiece = 1200;
constexpr std::size_t kLinearBytesAPiece = kSamplesAPiece * sizeof(std::int16_t);

std::string linearBytes(std::span<const std::int16_t> samples) {
  std::string bytes;
  bytes.reserve(samples.size() * sizeof(std::int16_t));
  for (const std::int16_t sample : samples) {
    const auto bits = static_cast<std::uint16_t>(sample);
    bytes += static_cast<char>(bits & 0xff);
    bytes += static_cast<char>(bits >> 8);
  }
  return bytes;
}

}  // namespace

void streamSpeech(std::string_view text, int volumePercent, SpeechEncoding encoding,
                  const std::function<void(std::string bytes)> &send) {
  const bool isMp3 = encoding == SpeechEncoding::mp3;
  const std::size_t bytesAPiece = isMp3 ? kMp3BytesAPiece : kLinearBytesAPiece;
  Mp3Encoder mp3;
  std::string pending;
  for (const std::string &sentence : sentencesOf(text)) {
    std::vector<std::int16_t> samples = speak(sentence);
    applyVolume(samples, volumePercent);
    for (auto rest = std::span<const std::int16_t>(samples); !rest.empty();) {
      const auto piece = rest.first(std::min(rest.size(), kSamplesAPiece));
      rest = rest.subspan(piece.size());
      pending += isMp3 ? mp3.encode(piece) : linearBytes(piece);
      if (pending.size() >= bytesAPiece) send(std::exchange(pending, {}));
    }
  }
  if (isMp3) pending += mp3.finish();
  if (!pending.empty()) send(std::move(pending));
}

}  // namespace velmora
