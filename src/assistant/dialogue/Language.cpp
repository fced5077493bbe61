// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Language.h"

#include <algorithm>

#include "assistant/dialogue/Vocabulary.h"
#include "foundation/fatal.h"

namespace velmora {
namespace {

constexpr auto kOpening =
    "[okay mac | hey] [please | can you [please] | could you [please] | would you [please] | "
    "i want you to | i would like you to]";
constexpr auto kClosing = "please";
constexpr auto kStopPhrases =
    "stop | cancel | quit | exit | stop (it | this | that | playing | the game | the quiz) | "
    "cancel (it | this | that | the game | the quiz) | (quit | end) (it | this | the game | the quiz) | "
    "i give up | never mind | forget it | no more | that's enough | i don't want to play [any more]";
constexpr auto kSayAgainPhrases =
    "(repeat | say) (that | it) [again] | say (that | it) again | what did you say | "
    "(repeat | what was) the question | once more | again | pardon [me] | come again | "
    "i didn't (hear | catch | get) (that | you)";

std::vector<Rule> allRules() {
  std::vector<Rule> rules = vocabulary();
  for (const SkillTable &table : skillTables())
    rules.insert(rules.end(), table.rules.begin(), table.rules.end());
  return rules;
}

}  // namespace

const Language &Language::instance() {
  static const Language language;
  return language;
}

Language::Language() try : m_commands(allRules(), kOpening, kClosing) {
  const std::vector<Rule> rules = allRules();
  for (const SkillTable &table : skillTables()) {
    for (const Skill &skill : table.skills) {
      m_commands.add(skill.phrases);
      m_skills.push_back(&skill);
    }
    for (const Question &question : table.questions) {
      Answers answers{&question, Grammar(rules, {}, kClosing)};
      answers.grammar.add(question.phrases);
      answers.grammar.add(kStopPhrases);
      answers.grammar.add(kSayAgainPhrases);
      m_answers.push_back(std::move(answers));
    }
  }
} catch (const std::invalid_argument &error) {
  fatal(std::string("The phrases of the skills are wrong: ") + error.what());
}

const Language::Answers *Language::answersTo(std::string_view question) const {
  const auto found = std::find_if(m_answers.begin(), m_answers.end(),
                                  [&](const Answers &answers) { return answers.question->name == question; });
  return found == m_answers.end() ? nullptr : &*found;
}

bool Language::makesSense(std::string_view words) const {
  const auto match = m_commands.match(words);
  if (!match) return false;
  const auto check = skill(match->intent).makesSense;
  return !check || check(*match);
}

Language::Completeness Language::completeness(std::string_view words, std::string_view question) const {
  const Answers *answers = answersTo(question);
  auto match = answers ? answers->grammar.match(words) : std::nullopt;
  if (!match) match = m_commands.match(words);
  if (!match) return Completeness::none;
  return match->mayContinue ? Completeness::complete : Completeness::finished;
}

}  // namespace velmora
