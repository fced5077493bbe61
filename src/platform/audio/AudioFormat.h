// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace velmora {

/// How one sample is stored. Full scale of `float32` is 1.
enum class SampleType { float32, int16 };

/// What the samples of a buffer are.
struct AudioFormat {
  SampleType sampleType = SampleType::float32;
  int sampleRate = 0;       ///< Hz
  int channels = 1;         ///< samples in a frame
  bool interleaved = true;  ///< frame after frame, and not channel after channel

  /// Bytes of one sample.
  [[nodiscard]] std::size_t sampleBytes() const { return sampleType == SampleType::int16 ? 2 : 4; }

  bool operator==(const AudioFormat &) const = default;
};

}  // namespace velmora
