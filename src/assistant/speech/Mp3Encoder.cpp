// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/Mp3Encoder.h"

#include <lame/lame.h>

#include <algorithm>
#include <stdexcept>

#include "assistant/speech/Voice.h"

namespace velmora {
namespace {

constexpr int kBitRate = 48;  // kb/s: a listening recogniser understands it as well as it does the samples

/// What LAME asks for: the worst case for `samples`, and the least that a flush may need.
std::size_t largestOutput(std::size_t samples) { return samples + samples / 4 + 7200; }

void throwOnFailure(int result) {
  if (result < 0) throw std::runtime_error("MP3 encoding failed: LAME error " + std::to_string(result));
}

std::string resized(std::string bytes, int size) {
  throwOnFailure(size);
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

unsigned char *bytesOf(std::string &text) { return reinterpret_cast<unsigned char *>(text.data()); }

}  // namespace

struct Mp3Encoder::Encoder {
  Encoder() : flags(lame_init()) {}
  ~Encoder() { lame_close(flags); }
  Encoder(const Encoder &) = delete;
  Encoder &operator=(const Encoder &) = delete;

  lame_global_flags *const flags;
};

Mp3Encoder::Mp3Encoder() : m_encoder(std::make_unique<Encoder>()) {
  lame_global_flags *const flags = m_encoder->flags;
  if (!flags) throw std::runtime_error("MP3 encoding cannot start");
  lame_set_num_channels(flags, 1);
  lame_set_mode(flags, MONO);
  lame_set_in_samplerate(flags, kSpeechRate);
  lame_set_out_samplerate(flags, kSpeechRate);
  lame_set_VBR(flags, vbr_off);
  lame_set_brate(flags, kBitRate);
  lame_set_bWriteVbrTag(flags, 0);
  lame_set_write_id3tag_automatic(flags, 0);
  lame_set_disable_reservoir(flags, 1);  // no frame refers to an earlier one
  throwOnFailure(lame_init_params(flags));
}

Mp3Encoder::~Mp3Encoder() = default;

std::string Mp3Encoder::encode(std::span<const std::int16_t> samples) {
  std::string all;
  while (!samples.empty()) {
    const auto piece = samples.first(std::min<std::size_t>(samples.size(), kSpeechRate));
    samples = samples.subspan(piece.size());
    std::string bytes(largestOutput(piece.size()), '\0');
    const int size =
        lame_encode_buffer(m_encoder->flags, piece.data(), nullptr, static_cast<int>(piece.size()),
                           bytesOf(bytes), static_cast<int>(bytes.size()));
    all += resized(std::move(bytes), size);
  }
  return all;
}

std::string Mp3Encoder::finish() {
  std::string bytes(largestOutput(0), '\0');
  const int size = lame_encode_flush(m_encoder->flags, bytesOf(bytes), static_cast<int>(bytes.size()));
  return resized(std::move(bytes), size);
}

}  // namespace velmora
