// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "assistant/NumberWords.h"
#include "assistant/Skill.h"

namespace velmora {
namespace {

constexpr auto kAsk = " What is your guess?";
constexpr auto kGuess =
    "(?:(?:is it|i guess|how about|what about|i think it is|i think it's|my guess is) )?(.+)";
constexpr auto kStop = "(?:stop|cancel|quit|end)(?: it| playing| the game)?|i give up|never mind";

/// The same with numbers as figures and in words.
Answer aboutNumber(const std::string &before, int number, const std::string &after) {
  return {before + std::to_string(number) + after, before + numberInWords(number) + after};
}

Answer endGame(Conversation &conversation, Answer answer) {
  conversation.game.reset();
  return answer;
}

Answer askAgain(const std::string &why) {
  return {why + " Say a number from 1 to 100.", why + " Say a number from one to one hundred."};
}

Answer won(int tries, int secret) {
  const std::string right = " is right! You found it ";
  if (tries == 1) return aboutNumber("", secret, right + "at the first try.");
  return {std::to_string(secret) + right + "in " + std::to_string(tries) + " tries.",
          numberInWords(secret) + right + "in " + numberInWords(tries) + " tries."};
}

}  // namespace

Answer startGame(Conversation &conversation, const Dialogue::RandomSource &random) {
  conversation.game = GuessingGame{.secret = std::clamp(random(GuessingGame::kLowest, GuessingGame::kHighest),
                                                        GuessingGame::kLowest, GuessingGame::kHighest)};
  return {std::string("I am thinking of a number from 1 to 100.") + kAsk,
          std::string("I am thinking of a number from one to one hundred.") + kAsk};
}

Answer continueGame(Conversation &conversation, const std::string &words) {
  static const std::regex guessPattern(kGuess);
  static const std::regex stopPattern(kStop);
  GuessingGame &game = conversation.game.value();
  game.silences = 0;
  if (std::regex_match(words, stopPattern)) {
    return endGame(conversation, aboutNumber("All right. My number was ", game.secret, "."));
  }
  std::smatch match;
  if (!std::regex_match(words, match, guessPattern)) return askAgain("I did not understand that.");
  const auto guess = numberFromWords(match.str(1));
  if (!guess) return askAgain("That was not a number.");
  if (*guess < GuessingGame::kLowest || *guess > GuessingGame::kHighest)
    return askAgain("My number is not there.");
  game.tries = std::min(game.tries + 1, GuessingGame::kMostTries);
  if (*guess == game.secret) return endGame(conversation, won(game.tries, game.secret));
  return aboutNumber(*guess < game.secret ? "My number is higher than " : "My number is lower than ", *guess,
                     std::string(".") + kAsk);
}

Answer continueGameAfterSilence(Conversation &conversation) {
  GuessingGame &game = conversation.game.value();
  // The microphone must not be opened for ever in an empty room.
  if (++game.silences >= GuessingGame::kMostSilences) {
    return endGame(conversation, {"I did not hear anything, so let us end the game."});
  }
  return askAgain("I did not hear anything.");
}

}  // namespace velmora
