// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/Interruption.h"
#include "tools/Options.h"

namespace velmora {

/// Holds the whole conversation and prints its turns, up to the first one that fails. Throws what
/// `ServiceAccess` does, and `std::runtime_error` with the one line to show when a turn fails or the reports
/// or an answer cannot be written.
void converse(const Options &options, const Interruption &interruption);

}  // namespace velmora
