// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/SpokenText.h"

#include <array>
#include <cstdlib>
#include <locale>
#include <regex>
#include <utility>

#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

/// Expressions ask the locale's facet for characters, which fills a table of its own as it is asked, without
/// a lock. All at once, before several threads search, it is only read.
bool fillCharacterTables() {
  const auto &facet = std::use_facet<std::ctype<char>>(std::locale());
  for (int c = 0; c <= 255; ++c) {
    (void)facet.widen(static_cast<char>(c));
    (void)facet.narrow(static_cast<char>(c), '\0');
  }
  return true;
}

/// Replaces each match by what `words` makes of it.
template <typename Words>
std::string replaceEach(const std::string &text, const std::regex &pattern, Words words) {
  std::string result;
  std::size_t done = 0;
  for (auto match = std::sregex_iterator(text.begin(), text.end(), pattern); match != std::sregex_iterator();
       ++match) {
    const auto at = static_cast<std::size_t>(match->position());
    result += text.substr(done, at - done) + words(*match);
    done = at + static_cast<std::size_t>(match->length());
  }
  return result + text.substr(done);
}

std::string clockInWords(const std::smatch &match) {
  const int hour = std::atoi(match.str(1).c_str());
  const int minute = std::atoi(match.str(2).c_str());
  const std::string half = match.str(3) == "AM" ? "A M" : "P M";
  if (minute == 0) return numberInWords(hour) + ' ' + half;
  return numberInWords(hour) + (minute < 10 ? " oh " : " ") + numberInWords(minute) + ' ' + half;
}

std::string dateInWords(const std::smatch &match) {
  std::string words = "the " + ordinalInWords(std::atoi(match.str(1).c_str())) + " of " + match.str(2);
  if (match.length(3) > 0) words += ", " + yearInWords(std::atoi(match.str(3).c_str()));
  return words;
}

std::string figuresInWords(const std::smatch &match) {
  std::string whole;
  for (const char c : match.str(2)) {
    if (c != ',') whole += c;
  }
  std::string words = match.length(1) > 0 ? "minus " : "";
  words += numberInWords(std::strtoll(whole.c_str(), nullptr, 10));
  if (match.length(3) > 0) {
    words += " point";
    for (const char digit : match.str(3).substr(1)) words += ' ' + numberInWords(digit - '0');
  }
  return words;
}

}  // namespace

std::string spokenForm(std::string_view shown) {
  [[maybe_unused]] static const bool isFilled = fillCharacterTables();
  static const std::regex clock("\\b(\\d{1,2}):(\\d\\d) (AM|PM)\\b");
  static const std::regex date(
      "\\b(\\d{1,2}) (January|February|March|April|May|June|July|August|September|October|November|December)"
      "(?: (\\d{4})\\b)?");
  static const std::regex figures("(-)?(\\d{1,3}(?:,\\d{3})+|\\d{1,15})(\\.\\d+)?");
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kSigns{{
      {" + ", " plus "},
      {" − ", " minus "},
      {" × ", " times "},
      {" ÷ ", " divided by "},
      {" = ", " is "},
      {" ≈ ", " is about "},
      {"%", " percent"},
      {"°", " degrees"},
      {"^", " to the power of "},
  }};
  std::string text(shown);
  text = replaceEach(text, clock, clockInWords);
  text = replaceEach(text, date, dateInWords);
  text = replaceEach(text, figures, figuresInWords);
  for (const auto &[sign, words] : kSigns) {
    for (std::size_t at = text.find(sign); at != std::string::npos; at = text.find(sign, at + words.size()))
      text.replace(at, sign.size(), words);
  }
  return text;
}

std::vector<std::string> sentencesOf(std::string_view text) {
  std::vector<std::string> sentences;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool ends = text[i] == '.' || text[i] == '!' || text[i] == '?';
    if (!ends || (i + 1 < text.size() && text[i + 1] != ' ')) continue;
    sentences.emplace_back(text.substr(begin, i + 1 - begin));
    begin = std::min(i + 2, text.size());
  }
  if (begin < text.size()) sentences.emplace_back(text.substr(begin));
  return sentences;
}

}  // namespace velmora
