// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// All that the assistant understands, put together from the tables of skills.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "assistant/dialogue/Grammar.h"
#include "assistant/dialogue/Skill.h"

namespace velmora {

/// Immutable; any thread.
class Language {
 public:
  /// What may be said while a question is pending: its answers, and words that end or repeat it. What begins
  /// a new request is in `commands()`.
  struct Answers {
    const Question *question;
    Grammar grammar;
  };
  /// The intents that every question's grammar has after its answers, which are intent 0.
  static constexpr int kAnswer = 0;
  static constexpr int kStop = 1;
  static constexpr int kSayAgain = 2;

  /// Made on first use.
  static const Language &instance();

  [[nodiscard]] const Grammar &commands() const { return m_commands; }
  /// The skill of an intent of `commands()`.
  [[nodiscard]] const Skill &skill(int intent) const { return *m_skills[static_cast<std::size_t>(intent)]; }
  [[nodiscard]] const std::vector<Answers> &answers() const { return m_answers; }
  /// Of the question of that name; null when there is none.
  [[nodiscard]] const Answers *answersTo(std::string_view question) const;

  /// Whether `words` are a sentence of `commands()` that somebody might mean.
  [[nodiscard]] bool makesSense(std::string_view words) const;

  enum class Completeness {
    none,      ///< no sentence
    complete,  ///< a sentence, with which others begin that are longer
    finished,  ///< a sentence that nothing would usually be added to
  };
  /// Of `words`, said while `question` is pending (empty: none).
  [[nodiscard]] Completeness completeness(std::string_view words, std::string_view question) const;

 private:
  Language();

  Grammar m_commands;
  std::vector<const Skill *> m_skills;
  std::vector<Answers> m_answers;
};

}  // namespace velmora
