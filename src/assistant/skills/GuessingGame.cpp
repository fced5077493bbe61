// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The assistant thinks of a number from 1 to 100, and the user finds it.
#include <algorithm>

#include "assistant/skills/Tables.h"
#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

constexpr auto kName = "guessing game";
constexpr int kLowest = 1;
constexpr int kHighest = 100;
constexpr auto kSecret = "secret";
constexpr auto kTries = "tries";

Answer start(const Request &request) {
  request.conversation.question = PendingQuestion{
      .name = kName, .values = {{kSecret, request.services.random(kLowest, kHighest)}, {kTries, 0}}};
  return {"I am thinking of a number from 1 to 100. What is your guess?"};
}

Answer guess(const Request &request) {
  auto &values = request.conversation.question->values;
  const int guessed = numberFromWords(request.slot("guess")).value_or(0);
  const int secret = values[kSecret];
  if (guessed < kLowest || guessed > kHighest) return {"My number is from 1 to 100. What is your guess?"};
  const int tries = values[kTries] = std::min(values[kTries] + 1, 999);
  const std::string text = std::to_string(guessed);
  if (guessed != secret)
    return {"My number is " + std::string(guessed < secret ? "higher" : "lower") + " than " + text +
            ". What is your guess?"};
  request.conversation.question.reset();
  if (tries == 1) return {text + " is right! You found it at the first try."};
  return {text + " is right! You found it in " + std::to_string(tries) + " tries."};
}

std::string prompt(const Conversation &) { return "Say a number from 1 to 100."; }

std::string giveUp(const Conversation &conversation) {
  return "All right, let us stop. My number was " +
         std::to_string(conversation.question->values.at(kSecret)) + '.';
}

}  // namespace

SkillTable guessingGame() {
  return {
      .rules = {{"guess", "zero | <below_hundred> | (a | one) hundred", true}},
      .skills = {{"guessing game",
                  "(let's | let us | can we | could we | shall we | i want to | i'd like to | do you want "
                  "to) play (a | the | some | that) [number] [guessing] game [with (me | you)] | (play | "
                  "start | begin | do) (a | the) [number] [guessing] game [with me] | [the] [number] "
                  "guessing game | (let me | let us | let's | can i | i want to | i'd like to) guess (a | "
                  "your | the) number | think of a number [for me] | [let's | let us] play guess (the | "
                  "my | a) number",
                  start,
                  {"let's play a guessing game", "think of a number"}}},
      .questions =
          {{kName,
            "[is it | i guess | how about | what about | maybe | i say | i think it is | i think it's | "
            "my guess is | i'd say | the number is] <guess>",
            guess, prompt, giveUp}},
  };
}

}  // namespace velmora
