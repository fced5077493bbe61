// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The assistant's voice.
//
//   std::vector<std::int16_t> samples = speak("It is five o'clock.");
//   applyVolume(samples, 50);
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace velmora {

/// Rate of everything the assistant hears and says, in hertz.
inline constexpr int kSpeechRate = 16000;

/// How loud speech is at full volume: the RMS level of what is not pause, in dBFS.
inline constexpr double kSpeechLevel = -20.0;

/// `text` spoken: mono samples at `kSpeechRate` and `kSpeechLevel`, which begin and end in silence; none for
/// a text without words. Takes some 15 ms for a second of speech. Any thread; callers take turns, since the
/// synthesiser has global state. Throws `std::runtime_error` when it fails.
[[nodiscard]] std::vector<std::int16_t> speak(std::string_view text);

/// Scales `samples` to `percent` of the full volume; 100 and more leaves them, 0 and less is silence.
void applyVolume(std::span<std::int16_t> samples, int percent);

}  // namespace velmora
