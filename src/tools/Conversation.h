// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "tools/Interruption.h"
#include "tools/Options.h"

namespace velmora {

/// Holds the whole conversation and prints its turns, up to the first one that fails. Throws what
/// `ServiceAccess` does, and `std::runtime_error` with the one line to show when a turn fails or the reports
/// or an answer cannot be written.
void converse(const Options &options, const Interruption &interruption);

/// The same with the microphone and the loudspeaker, from the user's question on for as long as the assistant
/// asks back. Throws `AudioError`, too, when there is nothing to hear with.
void converseByVoice(const Options &options, const Interruption &interruption);

/// How many answers of such a conversation may have to be told apart: more than one.
inline constexpr std::size_t kVoiceTurns = 2;

}  // namespace velmora
