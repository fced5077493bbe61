// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/SoundStream.h"

#include "platform/audio/SoundEngine.h"

namespace velmora {

std::unique_ptr<SoundStream> SoundStream::capture(SoundConnection &connection, Owner &owner,
                                                  const Source &source, int sampleRate,
                                                  std::uint32_t frames) {
  return connection.server().capture(owner, source, sampleRate, frames);
}

std::unique_ptr<SoundStream> SoundStream::playback(SoundConnection &connection, Owner &owner, int sampleRate,
                                                   int channels) {
  return connection.server().playback(owner, sampleRate, channels);
}

}  // namespace velmora
