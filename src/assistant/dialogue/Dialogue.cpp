// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Dialogue.h"

#include <utility>

#include "assistant/speech/SpokenText.h"

namespace velmora {
namespace {

constexpr auto kUnknown = "unknown";
constexpr auto kSilence = "silence";

/// Nobody says as much in one request.
constexpr std::size_t kLongestRequest = 500;
/// The microphone must not be opened for ever in an empty room.
constexpr int kMostMisses = 3;

/// Lower case, words apart by single blanks, no punctuation but the apostrophe.
std::string normalised(std::string_view words) {
  std::string result;
  for (const char c : words.substr(0, kLongestRequest + 1)) {
    const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if ((lower >= 'a' && lower <= 'z') || lower == '\'') {
      result += lower;
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
  }
  if (result.ends_with(' ')) result.pop_back();
  return result;
}

const Question *questionOf(const Conversation &conversation) {
  if (!conversation.question) return nullptr;
  const Language::Answers *answers = Language::instance().answersTo(conversation.question->name);
  return answers ? answers->question : nullptr;
}

StateSeal::Time timeOf(const Services &services) {
  if (services.steadyClock) return services.steadyClock();
  return StateSeal::Time(std::chrono::seconds(services.clock().toSecsSinceEpoch()));
}

}  // namespace

Dialogue::Dialogue(Services services, StateSeal seal)
    : m_services(std::move(services)), m_seal(std::move(seal)) {}

Conversation Dialogue::conversationOf(std::string_view state) const {
  const auto text = m_seal.open(state, timeOf(m_services));
  auto conversation = text ? Conversation::fromText(*text) : std::nullopt;
  if (!conversation) return {};
  // Of another version of this program.
  if (conversation->question && !questionOf(*conversation)) conversation->question.reset();
  return *std::move(conversation);
}

std::string Dialogue::pendingQuestion(std::string_view state) const {
  const Conversation conversation = conversationOf(state);
  return conversation.question ? conversation.question->name : std::string();
}

Reply Dialogue::reply(std::string skill, const Answer &answer, Conversation conversation) const {
  if (!answer.isRepetition) conversation.lastAnswer = answer.text;
  std::string kept = conversation.text();
  // One character may take six in the text: only that tells whether the answer can be said again.
  if (kept.size() > StateSeal::kLargest - StateSeal::kOverhead) {
    conversation.lastAnswer.clear();
    kept = conversation.text();
  }
  return {.skill = std::move(skill),
          .text = answer.text,
          .speech = spokenForm(answer.text),
          .followOn = conversation.question.has_value(),
          .state = m_seal.seal(kept, timeOf(m_services)),
          .volume = answer.volume};
}

Reply Dialogue::answer(std::string_view words, const Context &context) const {
  const std::string sentence = normalised(words);
  if (sentence.size() > kLongestRequest) return answerToUnclearSpeech(context);
  Conversation conversation = conversationOf(context.state);
  const Language &language = Language::instance();
  const Question *const question = questionOf(conversation);

  if (question) {
    conversation.question->misses = 0;
    const auto match = language.answersTo(question->name)->grammar.match(sentence);
    if (match && match->intent == Language::kStop) {
      const Answer answer{question->giveUp(conversation)};
      conversation.question.reset();
      return reply(question->name, answer, std::move(conversation));
    }
    if (match && match->intent == Language::kSayAgain) {
      const Answer answer{question->prompt(conversation), {}, true};
      return reply(question->name, answer, std::move(conversation));
    }
    if (match) {
      const Answer answer = question->answer({*match, conversation, context.volume, m_services});
      return reply(question->name, answer, std::move(conversation));
    }
  }

  const auto match = language.commands().match(sentence);
  if (!match) return answerToUnclearSpeech(context);
  const Skill &skill = language.skill(match->intent);
  const auto before = conversation.question;
  Answer answer = skill.answer({*match, conversation, context.volume, m_services});
  // A request between a question and its answer does not end the dialogue, unless it begins another one.
  const bool samePending = question && conversation.question && conversation.question->name == before->name &&
                           conversation.question->values == before->values;
  if (samePending) {
    const bool isSentence =
        answer.text.ends_with('.') || answer.text.ends_with('!') || answer.text.ends_with('?');
    answer.text += (isSentence ? " " : ". ") + question->prompt(conversation);
  }
  return reply(skill.name, answer, std::move(conversation));
}

Reply Dialogue::answerToMiss(const Context &context, std::string skill, std::string complaint) const {
  Conversation conversation = conversationOf(context.state);
  const Question *const question = questionOf(conversation);
  if (!question) return reply(std::move(skill), {std::move(complaint), {}, true}, std::move(conversation));
  if (++conversation.question->misses >= kMostMisses) {
    complaint += ' ' + question->giveUp(conversation);
    conversation.question.reset();
  } else {
    complaint += ' ' + question->prompt(conversation);
  }
  return reply(question->name, {std::move(complaint), {}, true}, std::move(conversation));
}

Reply Dialogue::answerToUnclearSpeech(const Context &context) const {
  return answerToMiss(context, kUnknown,
                      pendingQuestion(context.state).empty()
                          ? "I did not understand that. You can ask me: what can you do?"
                          : "I did not understand that.");
}

Reply Dialogue::answerToSilence(const Context &context) const {
  return answerToMiss(context, kSilence, "I did not hear anything.");
}

}  // namespace velmora
