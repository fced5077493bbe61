// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the assistant can do: a table of skills, each known by the words that ask for it.
#pragma once

#include <optional>
#include <regex>
#include <span>
#include <string>
#include <utility>

#include "assistant/Conversation.h"
#include "assistant/Dialogue.h"

namespace velmora {

/// A request as its skill gets it.
struct Request {
  const std::smatch &words;    ///< the request in lower case, matched with the skill's pattern
  Conversation &conversation;  ///< what the skill leaves here comes back with the next request
  const Dialogue::Clock &clock;
  const Dialogue::RandomSource &random;
};

/// What a skill says. The text is spoken as it is unless there is something else to be spoken.
struct Answer {
  Answer(std::string shown) : text(std::move(shown)), speech(text) {}
  Answer(std::string shown, std::string spoken) : text(std::move(shown)), speech(std::move(spoken)) {}

  std::string text;
  std::string speech;
};

struct Skill {
  const char *name;
  const char *pattern;  ///< a regular expression for the whole request: lower case, no punctuation
  /// Nothing when the request is not one for this skill after all.
  std::optional<Answer> (*answer)(const Request &request);
};

/// The skills that a request is offered to, in this order, when the assistant has asked nothing back. A
/// request of one word that noise is easily mistaken for ("five", "no", "stop") is nobody's here.
[[nodiscard]] std::span<const Skill> skills();

/// The first words of a guessing game; its number is drawn and put into the conversation.
[[nodiscard]] Answer startGame(Conversation &conversation, const Dialogue::RandomSource &random);
/// What a game that is under way says to `words`, and to silence. It is taken out of the conversation when it
/// ends; while it goes on, it asks for the next guess.
[[nodiscard]] Answer continueGame(Conversation &conversation, const std::string &words);
[[nodiscard]] Answer continueGameAfterSilence(Conversation &conversation);

}  // namespace velmora
