// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a sound file.
#include <sys/mman.h>
#include <unistd.h>

#include <array>

#include "foundation/Descriptor.h"
#include "fuzz/Input.h"
#include "platform/audio/AudioFile.h"

namespace velmora {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const Descriptor memory(::memfd_create("sound", MFD_CLOEXEC));
  if (memory.number() < 0 || ::write(memory.number(), data, size) != static_cast<ssize_t>(size)) return 0;
  try {
    AudioFile file("/proc/self/fd/" + std::to_string(memory.number()));
    std::array<std::int16_t, 1600> frame;
    std::size_t samples = 0;
    for (;;) {
      const AudioRead read = file.read(frame);
      fuzz::require(read.samples <= frame.size(), "no more samples than there is room for");
      samples += read.samples;
      fuzz::require(samples <= std::size_t{AudioFile::longestSeconds + 1} * 16000,
                    "no file is longer than the longest");
      if (read.ended) break;
      fuzz::require(read.samples == frame.size(), "only the last block is short");
    }
  } catch (const AudioError &) {
  }
  return 0;
}

}  // namespace velmora
