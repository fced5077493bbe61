// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the assistant can do. A new answer is one entry in a table of src/assistant/skills/: the phrases that
// ask for it, examples of them, and the function that gives it.
#pragma once

#include <QDateTime>
#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "assistant/dialogue/Conversation.h"
#include "assistant/dialogue/Grammar.h"

namespace velmora {

class ShoppingList;

/// What skills need of the world. All of it may be used by several threads at once.
struct Services {
  /// The time, in the user's time zone.
  std::function<QDateTime()> clock;
  /// A number from `low` to `high`, both included.
  std::function<int(int low, int high)> random;
  ShoppingList &shoppingList;
  /// A time that no setting of the clock moves, for how old something is; null: `clock`.
  std::function<std::chrono::sys_seconds()> steadyClock = {};
};

/// A request as its skill gets it.
struct Request {
  const Match &words;
  Conversation &conversation;  ///< the question that is pending, or that the answer asks
  int volume;                  ///< of the answers, in percent
  const Services &services;

  [[nodiscard]] std::string slot(std::string_view rule, std::size_t index = 0) const {
    return words.slot(rule, index);
  }
};

struct Answer {
  std::string text;                ///< to be shown; what is spoken is made from it
  std::optional<int> volume = {};  ///< the volume of answers from now on, in percent
  bool isRepetition = false;       ///< is not itself an answer that may be asked for again
};

struct Skill {
  std::string name;
  std::string phrases;
  Answer (*answer)(const Request &request);
  std::vector<std::string> examples;  ///< sentences of `phrases`, the most telling one first
  /// Whether anybody would say these words in earnest; null: always. What nobody would is most likely
  /// something else that was misheard.
  bool (*makesSense)(const Match &words) = nullptr;
};

/// Something that skills ask back. It is pending while it stands in the conversation.
struct Question {
  std::string name;
  std::string phrases;                       ///< what may be answered to it
  Answer (*answer)(const Request &request);  ///< takes it out of the conversation once it is settled
  std::string (*prompt)(const Conversation &conversation);  ///< asks it again
  std::string (*giveUp)(const Conversation &conversation);  ///< what is said when the user does not want to
};

/// What one file of skills brings.
struct SkillTable {
  std::vector<Rule> rules = {};
  std::vector<Skill> skills = {};
  std::vector<Question> questions = {};
};

/// All tables. What fits the phrases of several skills belongs to the first.
[[nodiscard]] std::span<const SkillTable> skillTables();

}  // namespace velmora
