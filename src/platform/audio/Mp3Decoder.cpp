// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/Mp3Decoder.h"

#include <utility>

#include "platform/audio/SoundEngine.h"

namespace velmora {

Mp3Decoder::Mp3Decoder(std::shared_ptr<const std::string> bytes)
    : m_feed(soundEngine().makeFeed(std::move(bytes))) {}

}  // namespace velmora
