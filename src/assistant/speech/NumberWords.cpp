// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/NumberWords.h"

#include <algorithm>
#include <array>
#include <cstdio>
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

namespace {

/// Reads the words of a number from the left.
class Reader {
 public:
  explicit Reader(std::vector<std::string> words) : m_words(std::move(words)) {}

  bool take(std::string_view word) {
    if (m_next == m_words.size() || m_words[m_next] != word) return false;
    ++m_next;
    return true;
  }

  template <typename Table>
  std::optional<int> takeOf(const Table &table, std::ptrdiff_t from, int below) {
    if (m_next == m_words.size()) return std::nullopt;
    const auto found = indexOf(table, m_words[m_next], from);
    if (!found || *found >= below) return std::nullopt;
    ++m_next;
    return found;
  }

  std::optional<int> belowHundred() {
    if (const auto tens = takeOf(kTens, 2, 10)) return *tens * 10 + takeOf(kSmall, 1, 10).value_or(0);
    return takeOf(kSmall, 1, 20);
  }

  std::optional<int> belowThousand() {
    std::optional<int> number = belowHundred();
    if (!number && !takeArticleBefore("hundred")) return std::nullopt;
    if (!take("hundred")) return number;
    if (number.value_or(1) > 9) return std::nullopt;
    return number.value_or(1) * 100 + rest(&Reader::belowHundred);
  }

  /// "a", if `scale` follows.
  bool takeArticleBefore(std::string_view scale) {
    if (m_words.size() - m_next < 2 || m_words[m_next] != "a" || m_words[m_next + 1] != scale) return false;
    ++m_next;
    return true;
  }

  /// What may follow hundreds or thousands, with or without "and".
  int rest(std::optional<int> (Reader::*part)()) {
    const std::size_t before = m_next;
    take("and");
    const auto more = (this->*part)();
    if (!more) m_next = before;
    return more.value_or(0);
  }

  std::optional<int> number() {
    if (take("zero")) return 0;
    const std::optional<int> number = belowThousand();
    if (!number && !takeArticleBefore("thousand") && !takeArticleBefore("million")) return std::nullopt;
    if (number.value_or(1) == 1 && take("million")) return 1'000'000;
    if (!take("thousand")) return number;
    return number.value_or(1) * 1000 + rest(&Reader::belowThousand);
  }

  [[nodiscard]] bool atEnd() const { return m_next == m_words.size(); }

 private:
  std::vector<std::string> m_words;
  std::size_t m_next = 0;
};

std::vector<std::string> split(std::string_view text) {
  std::string spaced(text);
  std::replace(spaced.begin(), spaced.end(), '-', ' ');
  std::istringstream stream(spaced);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace

std::optional<int> numberFromWords(std::string_view words) {
  Reader reader(split(words));
  const auto number = reader.number();
  return reader.atEnd() ? number : std::nullopt;
}

std::optional<double> decimalFromWords(std::string_view words) {
  Reader reader(split(words));
  const double sign = reader.take("minus") || reader.take("negative") ? -1.0 : 1.0;
  if (reader.take("half")) {
    const bool whole = reader.take("a") || reader.take("an") || reader.atEnd();
    return whole && reader.atEnd() ? std::optional(sign * 0.5) : std::nullopt;
  }
  std::optional<double> number = reader.number();
  if (!number && (reader.take("a") || reader.take("an"))) number = 1.0;
  if (number && reader.take("point")) {
    double place = 0.1;
    bool any = false;
    while (const auto digit = reader.takeOf(kSmall, 0, 10)) {
      *number += *digit * place;
      place /= 10;
      any = true;
    }
    if (!any) return std::nullopt;
  } else if (number && reader.take("and")) {
    if (!reader.take("a") || !reader.take("half")) return std::nullopt;
    *number += 0.5;
  }
  if (!number || !reader.atEnd()) return std::nullopt;
  return sign * *number;
}

std::string numberInWords(std::int64_t number) {
  constexpr std::int64_t kTooLarge = 1'000'000'000'000'000;
  std::string words;
  if (number <= -kTooLarge || number >= kTooLarge) {
    for (const char digit : std::to_string(number)) {
      if (!words.empty()) words += ' ';
      words += digit == '-' ? "minus" : at(kSmall, digit - '0');
    }
    return words;
  }
  if (number < 0) return "minus " + numberInWords(-number);
  if (number < 1000) return belowThousand(number);
  constexpr std::array<std::string_view, 5> kScales{"", " thousand", " million", " billion", " trillion"};
  std::int64_t scale = kTooLarge / 1000;
  for (std::size_t index = kScales.size() - 1; index > 0; --index, scale /= 1000) {
    const std::int64_t count = number / scale;
    number %= scale;
    if (count == 0) continue;
    if (!words.empty()) words += ' ';
    (words += belowThousand(count)) += kScales[index];
  }
  if (number != 0) words += (number < 100 ? " and " : " ") + belowThousand(number);
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

std::optional<int> ordinalFromWords(std::string_view words) {
  for (int day = 1; day <= 31; ++day) {
    if (ordinalInWords(day) == words) return day;
  }
  return std::nullopt;
}

std::string yearInWords(int year) {
  const bool inPairs = year >= 1000 && year < 10000 && year % 1000 >= 10;
  if (!inPairs) return numberInWords(year);
  const std::string century = belowHundred(year / 100);
  if (year % 100 == 0) return century + " hundred";
  return century + (year % 100 < 10 ? " oh " : " ") + belowHundred(year % 100);
}

std::string numberText(double number, int places) {
  std::array<char, 400> digits{};
  std::snprintf(digits.data(), digits.size(), "%.*f", places, number);
  std::string text = digits.data();
  if (places > 0) text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  if (text == "-0") return "0";
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  for (std::size_t place = std::min(text.find('.'), text.size()); place > first + 3;)
    text.insert(place -= 3, ",");
  return text;
}

}  // namespace velmora
