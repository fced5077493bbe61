// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Conversation.h"

#include <nlohmann/json.hpp>

#include "assistant/Dialogue.h"

namespace velmora {
namespace {

using Json = nlohmann::json;

constexpr auto kGame = "game";
constexpr auto kSecret = "secret";
constexpr auto kTries = "tries";
constexpr auto kSilences = "silences";

std::optional<int> number(const Json &object, const char *member, int low, int high) {
  const auto found = object.find(member);
  if (found == object.end() || !found->is_number_integer()) return std::nullopt;
  const auto value = found->get<std::int64_t>();
  if (value < low || value > high) return std::nullopt;
  return static_cast<int>(value);
}

}  // namespace

Conversation Conversation::fromState(std::string_view state) {
  if (state.size() > Dialogue::kLargestState) return {};
  const Json json = Json::parse(state.begin(), state.end(), nullptr, false);
  if (!json.is_object()) return {};
  const auto game = json.find(kGame);
  if (game == json.end() || !game->is_object()) return {};
  const auto secret = number(*game, kSecret, GuessingGame::kLowest, GuessingGame::kHighest);
  const auto tries = number(*game, kTries, 0, GuessingGame::kMostTries);
  const auto silences = number(*game, kSilences, 0, GuessingGame::kMostSilences);
  if (!secret || !tries || !silences) return {};
  return {.game = GuessingGame{.secret = *secret, .tries = *tries, .silences = *silences}};
}

std::string Conversation::state() const {
  Json json = Json::object();
  if (game) json[kGame] = {{kSecret, game->secret}, {kTries, game->tries}, {kSilences, game->silences}};
  return json.dump();
}

}  // namespace velmora
