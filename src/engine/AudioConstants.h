// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace velmora {

/// Samples per second that the microphone is heard with.
inline constexpr std::int32_t kNativeSampleRate = 44100;
/// Samples per second of the service's audio in both directions.
inline constexpr std::int32_t kServiceSampleRate = 16000;
/// Seconds of audio that are sent at a time.
inline constexpr double kBufferDuration = 0.1;
/// Frames of that.
inline constexpr auto kNativeFramesPerBuffer =
    static_cast<std::uint32_t>(kNativeSampleRate * kBufferDuration);
inline constexpr auto kServiceFramesPerBuffer =
    static_cast<std::uint32_t>(kServiceSampleRate * kBufferDuration);
static_assert(kNativeFramesPerBuffer == 4410 && kServiceFramesPerBuffer == 1600);

}  // namespace velmora
