// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/speech/NumberWords.h"

#include <gmock/gmock.h>

#include "assistant/speech/SpokenText.h"

namespace velmora {
namespace {

TEST(NumberWords, EveryNumberThatCanBeSaidIsUnderstood) {
  for (int number = 0; number <= 1'000'000; number += number < 2000 ? 1 : 997) {
    EXPECT_EQ(numberFromWords(numberInWords(number)), number) << numberInWords(number);
  }
}

TEST(NumberWords, UnderstandsNumbersAsPeopleSayThem) {
  const struct {
    const char *words;
    double number;
  } cases[] = {{"a hundred", 100},
               {"a thousand and one", 1001},
               {"a million", 1000000},
               {"one hundred five", 105},
               {"nine hundred and ninety-nine", 999},
               {"two point one two", 2.12},
               {"minus three", -3},
               {"half a", 0.5},
               {"a", 1},
               {"one and a half", 1.5}};
  for (const auto &c : cases) EXPECT_NEAR(decimalFromWords(c.words).value_or(0), c.number, 1e-12) << c.words;
  for (const char *words :
       {"", "and", "hundred", "thousand", "two million", "two thousand thousand", "and five",
        "one hundred and", "zero hundred", "ten hundred", "one two hundred", "two hundred zero",
        "twenty zero", "twenty eleven", "five twenty", "seven plus", "7", "fivety"}) {
    EXPECT_EQ(numberFromWords(words), std::nullopt) << words;
    EXPECT_EQ(decimalFromWords(words), std::nullopt) << words;
  }
  for (const char *words : {"zero point oh", "five and half", "two point", "point five", "half an apple"})
    EXPECT_EQ(decimalFromWords(words), std::nullopt) << words;
}

TEST(NumberWords, SaysAndShowsThemAsPeopleDo) {
  const struct {
    std::string text;
    const char *expected;
  } cases[] = {{numberInWords(-7), "minus seven"},
               {numberInWords(120), "one hundred and twenty"},
               {numberInWords(1005), "one thousand and five"},
               {numberInWords(998001), "nine hundred and ninety eight thousand and one"},
               {numberInWords(2000000000007), "two trillion and seven"},
               {numberInWords(1000000000000000),
                "one zero zero zero zero zero zero zero zero zero zero zero zero zero zero zero"},
               {ordinalInWords(1), "first"},
               {ordinalInWords(12), "twelfth"},
               {ordinalInWords(31), "thirty first"},
               {yearInWords(1900), "nineteen hundred"},
               {yearInWords(1904), "nineteen oh four"},
               {yearInWords(2005), "two thousand and five"},
               {yearInWords(2026), "twenty twenty six"},
               {numberText(1234567.5), "1,234,567.5"},
               {numberText(-0.001), "0"},
               {numberText(999.999), "1,000"},
               {spokenForm("It is 3:05 PM, not 12:00 AM."), "It is three oh five P M, not twelve A M."},
               {spokenForm("Sunday, 3 May 2026."), "Sunday, the third of May, twenty twenty six."},
               {spokenForm("-2.50 × 1,000 ≈ 7%"),
                "minus two point five zero times one thousand is about seven percent"}};
  for (const auto &c : cases) EXPECT_EQ(c.text, c.expected);
  EXPECT_THAT(sentencesOf("One. Two? It is 3.5 yes"),
              ::testing::ElementsAre("One.", "Two?", "It is 3.5 yes"));
  EXPECT_THAT(sentencesOf(""), ::testing::IsEmpty());
}

}  // namespace
}  // namespace velmora
