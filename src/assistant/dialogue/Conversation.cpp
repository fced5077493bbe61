// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Conversation.h"

#include <nlohmann/json.hpp>

namespace velmora {
namespace {

using Json = nlohmann::json;

constexpr auto kLastAnswer = "last";
constexpr auto kQuestion = "question";
constexpr auto kValues = "values";
constexpr auto kMisses = "misses";

}  // namespace

std::optional<Conversation> Conversation::fromText(std::string_view text) {
  try {
    const Json json = Json::parse(text.begin(), text.end());
    Conversation conversation{.lastAnswer = json.at(kLastAnswer)};
    if (const auto name = json.find(kQuestion); name != json.end())
      conversation.question =
          PendingQuestion{.name = *name, .values = json.at(kValues), .misses = json.at(kMisses)};
    return conversation;
  } catch (const Json::exception &) {
    return std::nullopt;
  }
}

std::string Conversation::text() const {
  Json json{{kLastAnswer, lastAnswer}};
  if (question) {
    json[kQuestion] = question->name;
    json[kValues] = question->values;
    json[kMisses] = question->misses;
  }
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace velmora
