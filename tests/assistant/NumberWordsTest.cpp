// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/NumberWords.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(NumberWords, EveryNumberThatCanBeSaidIsUnderstood) {
  for (int number = 0; number <= 999; ++number) {
    EXPECT_EQ(numberFromWords(numberInWords(number)), number) << numberInWords(number);
  }
}

TEST(NumberWords, UnderstandsNumbersAsPeopleSayThem) {
  const struct {
    const char *words;
    std::optional<int> number;
  } cases[] = {{"a hundred", 100},
               {"hundred", 100},
               {"a hundred twenty", 120},
               {"one hundred and five", 105},
               {"one hundred five", 105},
               {"nine hundred and ninety-nine", 999},
               {"forty two", 42},
               {"", {}},
               {"and", {}},
               {"a", {}},
               {"and five", {}},
               {"one hundred and", {}},
               {"zero hundred", {}},
               {"ten hundred", {}},
               {"one two hundred", {}},
               {"a hundred hundred", {}},
               {"two hundred zero", {}},
               {"twenty zero", {}},
               {"twenty eleven", {}},
               {"five twenty", {}},
               {"seven plus", {}},
               {"7", {}},
               {"fivety", {}}};
  for (const auto &c : cases) EXPECT_EQ(numberFromWords(c.words), c.number) << c.words;
}

TEST(NumberWords, SaysNumbersAsPeopleDo) {
  const struct {
    std::string words;
    const char *expected;
  } cases[] = {{numberInWords(-7), "minus seven"},
               {numberInWords(120), "one hundred and twenty"},
               {numberInWords(1000), "one thousand"},
               {numberInWords(1005), "one thousand and five"},
               {numberInWords(998001), "nine hundred and ninety eight thousand and one"},
               {numberInWords(12345), "twelve thousand three hundred and forty five"},
               {numberInWords(-1000000), "minus one zero zero zero zero zero zero"},
               {ordinalInWords(1), "first"},
               {ordinalInWords(12), "twelfth"},
               {ordinalInWords(20), "twentieth"},
               {ordinalInWords(30), "thirtieth"},
               {ordinalInWords(31), "thirty first"},
               {yearInWords(1900), "nineteen hundred"},
               {yearInWords(1904), "nineteen oh four"},
               {yearInWords(2000), "two thousand"},
               {yearInWords(2005), "two thousand and five"},
               {yearInWords(2026), "twenty twenty six"}};
  for (const auto &c : cases) EXPECT_EQ(c.words, c.expected);
}

}  // namespace
}  // namespace velmora
