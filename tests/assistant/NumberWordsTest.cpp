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

TEST(NumberWords, SaysAndShowsThemAsPeopleDo) {
  const struct {
    std::string text;
    const char *expected;
  } cases[] = {{numberInWords(-7), "minus seven"},
               {numberInWords(1005), "one thousand and five"},
               {numberInWords(2000000000007), "two trillion and seven"},
               {ordinalInWords(31), "thirty first"},
               {yearInWords(1904), "nineteen oh four"},
               {yearInWords(2005), "two thousand and five"},
               {yearInWords(2026), "twenty twenty six"},
               {numberText(1234567.5), "1,234,567.5"},
               {numberText(-0.001), "0"},
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
