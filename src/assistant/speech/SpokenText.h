// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// What is `shown` as it is to be spoken: numbers, times of the day, dates and signs in words, "7 × 12 = 84"
/// as "seven times twelve is eighty four". Any thread.
[[nodiscard]] std::string spokenForm(std::string_view shown);

/// The sentences of `text`, so that the first can be spoken while the next is made. Together they have all of
/// its words.
[[nodiscard]] std::vector<std::string> sentencesOf(std::string_view text);

}  // namespace velmora
