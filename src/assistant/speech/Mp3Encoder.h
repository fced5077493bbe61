// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Speech as MP3, made in pieces so that the first bytes can leave early.
//
//   Mp3Encoder encoder;
//   send(encoder.encode(samples));
//   send(encoder.finish());
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velmora {

/// Encodes one stream of 16 kHz mono samples: constant 48 kb/s, frames only (no tags), each decodable by
/// itself. Not thread-safe; one for each stream.
class Mp3Encoder {
 public:
  /// Throws `std::runtime_error` when the encoder cannot be set up.
  Mp3Encoder();
  ~Mp3Encoder();
  Mp3Encoder(const Mp3Encoder &) = delete;
  Mp3Encoder &operator=(const Mp3Encoder &) = delete;

  /// The bytes that `samples` complete, possibly none. Throws `std::runtime_error` when encoding fails.
  [[nodiscard]] std::string encode(std::span<const std::int16_t> samples);
  /// The rest of the stream, to be called once, at its end.
  [[nodiscard]] std::string finish();

 private:
  struct Encoder;
  std::unique_ptr<Encoder> m_encoder;
};

}  // namespace velmora
