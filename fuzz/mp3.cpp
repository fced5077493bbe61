// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a spoken answer.
#include <array>

#include "fuzz/Input.h"
#include "platform/audio/AudioSource.h"
#include "platform/audio/Mp3Decoder.h"

namespace velmora {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::size_t block = 1 + std::size_t{input.byte()} * 16;
  try {
    Mp3Decoder decoder(std::make_shared<const std::string>(input.rest()));
    fuzz::require(decoder.sampleRate() >= 8000 && decoder.sampleRate() <= 48000, "the rate is one of MP3");
    fuzz::require(decoder.channels() == 1 || decoder.channels() == 2, "there are one or two channels");
    std::array<std::int16_t, 1 + 255 * 16> samples;
    std::size_t all = 0;
    while (const std::size_t count = decoder.decode(std::span(samples).first(block))) {
      fuzz::require(count <= block, "no more samples than there is room for");
      all += count;
      // The smallest frame has 24 bytes and gives 2304 samples.
      fuzz::require(all <= (size / 24 + 4) * 2304, "sound does not come from nowhere");
    }
    fuzz::require(decoder.decode(samples) == 0, "the end stays the end");
  } catch (const AudioError &) {
  }
  return 0;
}

}  // namespace velmora
