// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>

#include "platform/audio/SoundStream.h"

struct pa_context;

namespace velmora {

/// As `SoundStream::capture` and `playback`; `context` is null while there is no server. On its thread.
std::unique_ptr<SoundStream> openCapture(pa_context *context, SoundStream::Owner &owner,
                                         const SoundStream::Source &source, int sampleRate,
                                         std::uint32_t frames);
std::unique_ptr<SoundStream> openPlayback(pa_context *context, SoundStream::Owner &owner, int sampleRate,
                                          int channels);

}  // namespace velmora
