// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "assistant/hearing/Recogniser.h"

namespace velmora {

/// Keeps a request for whoever wants to improve the recogniser: its 16 kHz mono samples as a WAV file in
/// `folder`, and what was heard, with its confidence, as a text file of the same name; both whole and for
/// their owner only. Any thread. A failure leaves neither, and is one line on standard error.
void record(const std::filesystem::path &folder, std::span<const std::int16_t> samples,
            const Recognition &heard);

}  // namespace velmora
