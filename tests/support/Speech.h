// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Speech and noise made for a test: 16 kHz mono samples. One thread at a time.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace velmora::tests {

using Samples = std::vector<std::int16_t>;

/// Whose voice asks; neither is the one that answers.
enum class Speaker { slt, awb };

[[nodiscard]] Samples spoken(std::string_view text, Speaker speaker);

/// Speech without what the synthesiser leaves before and after the words.
[[nodiscard]] Samples trimmed(const Samples &speech);

/// Noise with equal power in each octave, at `level` dBFS (mean power). The same for the same `seed`.
[[nodiscard]] Samples pinkNoise(std::size_t count, double level, unsigned seed = 1);

[[nodiscard]] inline Samples silence(int milliseconds) {
  return Samples(static_cast<std::size_t>(milliseconds) * 16);
}

/// The mean power of `samples` in dBFS.
[[nodiscard]] double levelOf(std::span<const std::int16_t> samples);

/// The sum, saturated; as long as the longer one.
[[nodiscard]] Samples mixed(Samples one, const Samples &other);

/// One after the other.
[[nodiscard]] Samples joined(std::initializer_list<Samples> parts);

}  // namespace velmora::tests
