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

/// The number from 0 to 1 000 000 that `words` are as a whole: "seven", "forty two", "a hundred twenty",
/// "twelve thousand and five", "a million". Lower case, single blanks. Nothing when they are no such number.
[[nodiscard]] std::optional<int> numberFromWords(std::string_view words);

/// The same with fractions and signs: "minus two point five", "half a", "one and a half", "a". 0 to 1 000 000
/// in magnitude.
[[nodiscard]] std::optional<double> decimalFromWords(std::string_view words);

/// `number` in words: "minus five", "one hundred and five". For magnitudes below a thousand million millions,
/// else the digits one by one.
[[nodiscard]] std::string numberInWords(std::int64_t number);

/// The place of a day in its month in words, "first" to "thirty first".
[[nodiscard]] std::string ordinalInWords(int day);
/// The inverse, 1 to 31.
[[nodiscard]] std::optional<int> ordinalFromWords(std::string_view words);

/// A year as it is said: "twenty twenty six", "two thousand five", "nineteen oh four".
[[nodiscard]] std::string yearInWords(int year);

/// A number for reading: thousands apart by commas, at most `places` digits after the point, none of them
/// trailing zeros: "1,234.5".
[[nodiscard]] std::string numberText(double number, int places = 2);

}  // namespace velmora
