// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/NumberWords.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

namespace velmora {
namespace {

constexpr std::array<std::string_view, 20> kSmall{"zero",    "one",     "two",       "three",    "four",
                                                  "five",    "six",     "seven",     "eight",    "nine",
                                                  "ten",     "eleven",  "twelve",    "thirteen", "fourteen",
                                                  "fifteen", "sixteen", "seventeen", "eighteen", "nineteen"};
constexpr std::array<std::string_view, 10> kTens{"",      "",      "twenty",  "thirty", "forty",
                                                 "fifty", "sixty", "seventy", "eighty", "ninety"};
constexpr std::array<std::string_view, 20> kOrdinals{
    "",           "first",     "second",    "third",       "fourth",     "fifth",     "sixth",
    "seventh",    "eighth",    "ninth",     "tenth",       "eleventh",   "twelfth",   "thirteenth",
    "fourteenth", "fifteenth", "sixteenth", "seventeenth", "eighteenth", "nineteenth"};

std::string_view at(const auto &table, std::int64_t index) { return table[static_cast<std::size_t>(index)]; }

/// Where `word` stands in `table`, from `first` on.
std::optional<int> indexOf(const auto &table, std::string_view word, std::ptrdiff_t first) {
  const auto found = std::find(table.begin() + first, table.end(), word);
  if (found == table.end()) return std::nullopt;
  return static_cast<int>(found - table.begin());
}

std::string belowHundred(std::int64_t number) {
  if (number < 20) return std::string(at(kSmall, number));
  std::string words(at(kTens, number / 10));
  if (number % 10 != 0) (words += ' ') += at(kSmall, number % 10);
  return words;
}

std::string belowThousand(std::int64_t number) {
  if (number < 100) return belowHundred(number);
  std::string words = belowHundred(number / 100) + " hundred";
  if (number % 100 != 0) words += " and " + belowHundred(number % 100);
  return words;
}

}  // namespace

std::optional<int> numberFromWords(std::string_view text) {
  std::string spaced(text);
  std::replace(spaced.begin(), spaced.end(), '-', ' ');
  std::istringstream stream(spaced);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);

  auto word = words.begin();
  int number = 0;
  const auto hundred = std::find(words.begin(), words.end(), "hundred");
  if (hundred != words.end()) {
    int hundreds = 1;
    if (word != hundred && *word == "a") {
      ++word;
    } else if (word != hundred) {
      hundreds = indexOf(kSmall, *word++, 1).value_or(10);
    }
    if (word != hundred || hundreds > 9) return std::nullopt;
    number = hundreds * 100;
    if (++word == words.end()) return number;
    if (*word == "and") ++word;
  }
  if (word == words.end()) return std::nullopt;
  if (const auto tens = indexOf(kTens, *word, 2)) {
    number += *tens * 10;
    if (++word == words.end()) return number;
    const auto ones = indexOf(kSmall, *word, 1);
    if (!ones || *ones > 9) return std::nullopt;
    number += *ones;
  } else {
    // Zero stands alone.
    const auto small = indexOf(kSmall, *word, number == 0 ? 0 : 1);
    if (!small) return std::nullopt;
    number += *small;
  }
  if (++word != words.end()) return std::nullopt;
  return number;
}

std::string numberInWords(std::int64_t number) {
  std::string words;
  if (number <= -1'000'000 || number >= 1'000'000) {
    for (const char digit : std::to_string(number)) {
      if (!words.empty()) words += ' ';
      words += digit == '-' ? "minus" : at(kSmall, digit - '0');
    }
    return words;
  }
  if (number < 0) return "minus " + numberInWords(-number);
  if (number < 1000) return belowThousand(number);
  words = belowThousand(number / 1000) + " thousand";
  const std::int64_t rest = number % 1000;
  if (rest != 0) words += (rest < 100 ? " and " : " ") + belowThousand(rest);
  return words;
}

std::string ordinalInWords(int day) {
  if (day < 1 || day > 99) return numberInWords(day);
  if (day < 20) return std::string(at(kOrdinals, day));
  if (day % 10 != 0) return std::string(at(kTens, day / 10)) + ' ' + std::string(at(kOrdinals, day % 10));
  std::string words(at(kTens, day / 10));
  words.replace(words.size() - 1, 1, "ieth");
  return words;
}

std::string yearInWords(int year) {
  const bool inPairs = year >= 1000 && year < 10000 && year % 1000 >= 10;
  if (!inPairs) return numberInWords(year);
  const std::string century = belowHundred(year / 100);
  if (year % 100 == 0) return century + " hundred";
  return century + (year % 100 < 10 ? " oh " : " ") + belowHundred(year % 100);
}

}  // namespace velmora
