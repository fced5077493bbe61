// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Numbers as people say them in English.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The number from 0 to 999 that `words` are as a whole: "seven", "forty two", "a hundred twenty",
/// "one hundred and five". Lower case, single spaces or hyphens. Nothing when they are no such number.
[[nodiscard]] std::optional<int> numberFromWords(std::string_view words);

/// `number` in words: "minus five", "one hundred and five". For magnitudes below 1 000 000 000, else the
/// digits one by one.
[[nodiscard]] std::string numberInWords(std::int64_t number);

/// The place of a day in its month in words, "first" to "thirty first".
[[nodiscard]] std::string ordinalInWords(int day);

/// A year as it is said: "twenty twenty six", "two thousand five", "nineteen oh four".
[[nodiscard]] std::string yearInWords(int year);

}  // namespace velmora
