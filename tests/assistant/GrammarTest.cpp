// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Grammar.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace velmora {
namespace {

using ::testing::ElementsAreArray;

const std::vector<Rule> kRules{{"digit", "one | two | three", true},
                               {"pair", "<digit> <digit>", true},
                               {"city", "york | new york", true},
                               {"endless", "a [<endless>]"}};

TEST(Grammar, TakesSentencesApart) {
  const struct {
    const char *phrase;
    const char *sentence;
    bool fits;
    bool mayContinue = false;
    std::vector<Match::Slot> slots = {};
  } cases[] = {
      {"what time [now]", "what time", true},
      {"what time [in <city>]", "what time", true, true},
      {"go <digit> [now]", "go one", true, false, {{"digit", "one"}}},
      {"what time [now]", "what", false},
      {"what time [now]", "what time now now", false},
      {"what time [now]", "", false},
      {"(tell | give) me", "give me", true},
      {"add <digit> (and <digit>)*", "add one", true, true, {{"digit", "one"}}},
      {"add <digit> (and <digit>)*",
       "add one and two and three",
       true,
       true,
       {{"digit", "one"}, {"digit", "two"}, {"digit", "three"}}},
      {"add <digit> (and <digit>)*", "add one and", false},
      {"go <digit>+", "go one two", true, true, {{"digit", "one"}, {"digit", "two"}}},
      {"time in <city>", "time in new york", true, false, {{"city", "new york"}}},
      {"a <pair> b", "a one two b", true, false, {{"pair", "one two"}, {"digit", "one"}, {"digit", "two"}}},
      {"what's it", "hey what's it please", true},
      {"what's it", "hey what's unheard of", false},
  };
  for (const auto &c : cases) {
    Grammar grammar(kRules, "hey", "please");
    grammar.add("something else");
    EXPECT_EQ(grammar.add(c.phrase), 1);
    const auto match = grammar.match(c.sentence);
    ASSERT_EQ(match.has_value(), c.fits) << c.phrase << " / " << c.sentence;
    if (!match) continue;
    EXPECT_EQ(match->intent, 1);
    EXPECT_THAT(match->slots, ElementsAreArray(c.slots)) << c.sentence;
    EXPECT_EQ(match->mayContinue, c.mayContinue) << c.sentence;
  }
}

TEST(Grammar, WhatFitsSeveralIntentsBelongsToTheFirst) {
  Grammar grammar(kRules);
  grammar.add("go <digit>");
  grammar.add("go one");
  EXPECT_EQ(grammar.match("go one")->intent, 0);
}

TEST(Grammar, RefusesPhrasesThatAreNone) {
  for (const char *phrase :
       {"", "a |", "(a", "[a", "a)", "<digit", "<nothing>", "<endless>", "A", "a 1", "*", "()", "[]"}) {
    Grammar grammar(kRules);
    EXPECT_THROW(grammar.add(phrase), std::invalid_argument) << phrase;
  }
}

}  // namespace
}  // namespace velmora
