// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Dialogue.h"

#include <algorithm>
#include <ctime>
#include <random>
#include <vector>

#include "assistant/Skill.h"

namespace velmora {
namespace {

constexpr auto kUnknown = "unknown";
constexpr auto kSilence = "silence";
constexpr auto kGame = "game";

/// Nobody says as much in one request, and regular expressions cost stack by the length of what they match.
constexpr std::size_t kLongestRequest = 500;

struct CompiledSkill {
  const Skill &skill;
  std::regex pattern;
};

const std::vector<CompiledSkill> &compiledSkills() {
  static const std::vector<CompiledSkill> compiled = [] {
    std::vector<CompiledSkill> all;
    for (const Skill &skill : skills()) all.push_back({skill, std::regex(skill.pattern)});
    return all;
  }();
  return compiled;
}

/// Lower case, words apart by single spaces, no punctuation but the apostrophe.
std::string normalised(std::string_view words) {
  std::string result;
  for (const char c : words.substr(0, kLongestRequest + 1)) {
    const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    const bool kept = (lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9') || lower == '\'';
    if (kept) {
      result += lower;
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
  }
  if (result.ends_with(' ')) result.pop_back();
  return result;
}

Reply reply(const char *skill, Answer answer, const Conversation &conversation) {
  return {.skill = skill,
          .text = std::move(answer.text),
          .speech = std::move(answer.speech),
          .followOn = conversation.game.has_value(),
          .state = conversation.state()};
}

Answer notUnderstood() { return {"I did not understand that. You can ask me: what can you do?"}; }

std::chrono::local_seconds localTime() {
  using namespace std::chrono;
  const std::time_t now = system_clock::to_time_t(system_clock::now());
  std::tm fields{};
  localtime_r(&now, &fields);
  const year_month_day date(year(fields.tm_year + 1900), month(static_cast<unsigned>(fields.tm_mon) + 1),
                            day(static_cast<unsigned>(fields.tm_mday)));
  return local_days(date) + hours(fields.tm_hour) + minutes(fields.tm_min) + seconds(fields.tm_sec);
}

int systemRandom(int low, int high) {
  std::random_device device;
  return std::uniform_int_distribution(low, high)(device);
}

}  // namespace

Dialogue::Dialogue() : Dialogue(localTime, systemRandom) {}

Dialogue::Dialogue(Clock clock, RandomSource random)
    : m_clock(std::move(clock)), m_random(std::move(random)) {}

Reply Dialogue::answer(std::string_view words, std::string_view state) const {
  Conversation conversation = Conversation::fromState(state);
  const std::string request = normalised(words);
  if (request.empty() || request.size() > kLongestRequest) return answerToUnclearSpeech(state);
  if (conversation.game) {
    Answer answer = continueGame(conversation, request);
    return reply(kGame, std::move(answer), conversation);
  }
  for (const auto &[skill, pattern] : compiledSkills()) {
    std::smatch match;
    if (!std::regex_match(request, match, pattern)) continue;
    std::optional<Answer> answer =
        skill.answer({.words = match, .conversation = conversation, .clock = m_clock, .random = m_random});
    if (answer) return reply(skill.name, *std::move(answer), conversation);
  }
  return reply(kUnknown, notUnderstood(), conversation);
}

Reply Dialogue::answerToUnclearSpeech(std::string_view state) const {
  Conversation conversation = Conversation::fromState(state);
  if (!conversation.game) return reply(kUnknown, notUnderstood(), conversation);
  Answer answer = continueGame(conversation, "");
  return reply(kGame, std::move(answer), conversation);
}

Reply Dialogue::answerToSilence(std::string_view state) const {
  Conversation conversation = Conversation::fromState(state);
  if (!conversation.game) return reply(kSilence, {"I did not hear anything."}, conversation);
  Answer answer = continueGameAfterSilence(conversation);
  return reply(kGame, std::move(answer), conversation);
}

}  // namespace velmora
