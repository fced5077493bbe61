// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Coins, dice and random numbers.
#include <utility>

#include "assistant/skills/Tables.h"
#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

constexpr int kMostDice = 10;

Answer flipCoin(const Request &request) {
  return {request.services.random(0, 1) == 0 ? "It is heads." : "It is tails."};
}

Answer rollDice(const Request &request) {
  const int count = numberFromWords(request.slot("dice_count")).value_or(1);
  const int sides = numberFromWords(request.slot("sides")).value_or(6);
  if (count > kMostDice) return {"I have only ten dice."};
  if (sides < 2) return {"A die has at least two sides."};
  std::string text = "You rolled ";
  int sum = 0;
  for (int i = 0; i < count; ++i) {
    const int eyes = request.services.random(1, sides);
    sum += eyes;
    if (i > 0) text += i + 1 == count ? " and " : ", ";
    text += std::to_string(eyes);
  }
  if (count > 1) text += ", together " + std::to_string(sum);
  return {text + '.'};
}

Answer drawNumber(const Request &request) {
  int low = numberFromWords(request.slot("limit", 0)).value_or(1);
  int high = numberFromWords(request.slot("limit", 1)).value_or(100);
  if (low > high) std::swap(low, high);
  return {"My number is " + numberText(request.services.random(low, high)) + '.'};
}

}  // namespace

SkillTable chanceSkills() {
  return {
      .rules = {{"dice_count", "one | two | three | four | five | six | seven | eight | nine | ten", true},
                {"sides", "<teen> | <digit> | <tens> | (a | one) hundred", true},
                {"limit", "zero | <below_thousand> | (a | one) (thousand | million)", true}},
      .skills =
          {
              {"coin",
               "[let's | let us] (flip | toss | throw) [me] (a | the | my) coin [for me | again] | "
               "(heads | head) or (tails | tail) | [do | make | give me | i need] [a] coin (flip | "
               "toss)",
               flipCoin,
               {"flip a coin"}},
              {"dice",
               "[let's | let us] (roll | throw | toss) [me] [a | the | some | my | <dice_count>] "
               "[<sides> sided] (die | dice) [for me | again] | (do | make | give me | i need) a (die "
               "| dice) roll",
               rollDice,
               {"roll two dice", "roll a twenty sided die"}},
              {"random number",
               "((give me | tell me | pick [me] | choose | say | draw | generate | name | create | "
               "select | i need | i want) (a | any | some | another | one) [random] number [for me] | "
               "[a | another] random number) [(between | from) <limit> (and | to) <limit>]",
               drawNumber,
               {"pick a number between one and ten", "give me a random number"}},
          },
  };
}

}  // namespace velmora
