// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the assistant answers.
//
//   Dialogue dialogue(services, seal);
//   Reply reply = dialogue.answer("let's play a guessing game", {});
//   reply = dialogue.answer("fifty", {.state = reply.state});
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "assistant/dialogue/Language.h"
#include "assistant/dialogue/Skill.h"
#include "assistant/dialogue/StateSeal.h"

namespace velmora {

/// One answer.
struct Reply {
  std::string skill;      ///< which skill or question answered, "unknown" when the request was not understood
  std::string text;       ///< to be shown
  std::string speech;     ///< the same to be spoken: numbers, times and signs in words
  bool followOn = false;  ///< the answer asks something back: listen again
  std::string state;      ///< to be given with the next request; at most `StateSeal::kLargest` bytes
  std::optional<int> volume = {};  ///< in percent, when it is to change
};

/// Finds the skill that a request belongs to and lets it answer. Keeps nothing between requests: what a
/// conversation remembers travels sealed in its state, and a state that is not ours or too old is a new
/// conversation. Any number of threads may ask one object.
class Dialogue {
 public:
  /// What a request comes with.
  struct Context {
    std::string_view state = {};
    int volume = 100;  ///< of the answers, in percent
  };

  Dialogue(Services services, StateSeal seal);

  /// The name of the question that is pending in the conversation of `state`, to be given to the recogniser;
  /// empty when there is none.
  [[nodiscard]] std::string pendingQuestion(std::string_view state) const;

  /// The answer to recognised `words` (any case, any punctuation). Never throws for what the arguments
  /// contain.
  [[nodiscard]] Reply answer(std::string_view words, const Context &context) const;
  /// The answer to speech that was not recognised with confidence.
  [[nodiscard]] Reply answerToUnclearSpeech(const Context &context) const;
  /// The answer when nobody spoke.
  [[nodiscard]] Reply answerToSilence(const Context &context) const;

 private:
  [[nodiscard]] Conversation conversationOf(std::string_view state) const;
  [[nodiscard]] Reply reply(std::string skill, const Answer &answer, Conversation conversation) const;
  [[nodiscard]] Reply answerToMiss(const Context &context, std::string skill, std::string complaint) const;

  const Services m_services;
  const StateSeal m_seal;
};

}  // namespace velmora
