// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "platform/audio/SoundEngine.h"

namespace velmora {

/// A connection to the sound server of the session, by libpulse.
std::unique_ptr<SoundServer> makePulseServer();

}  // namespace velmora
