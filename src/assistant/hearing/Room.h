// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Where an utterance is said.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace velmora {

/// The utterance in a quiet room: 16 kHz mono samples, with a little pink noise, as much as belongs to how
/// loud they are. The acoustic model was made of such recordings; one that is cleaner than any room, as a
/// voice that was never in one, is understood worse. The same utterance gets the same noise each time.
/// Thread-safe.
[[nodiscard]] std::vector<std::int16_t> withRoom(std::span<const std::int16_t> utterance);

}  // namespace velmora
