// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "platform/audio/Mp3Decoder.h"

namespace velmora {

/// By libmpg123. Throws as `Mp3Decoder` does.
std::unique_ptr<Mp3Decoder::Feed> makeMp3Feed(std::shared_ptr<const std::string> bytes);

}  // namespace velmora
