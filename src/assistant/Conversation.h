// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What a conversation remembers between two requests, and the bytes in which it travels through the client.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// A guessing game that is under way.
struct GuessingGame {
  static constexpr int kLowest = 1;
  static constexpr int kHighest = 100;
  static constexpr int kMostTries = 999;   ///< more are not counted
  static constexpr int kMostSilences = 3;  ///< in a row; then nobody is playing any more

  int secret = kLowest;
  int tries = 0;
  int silences = 0;  ///< how many times in a row nobody answered
};

struct Conversation {
  std::optional<GuessingGame> game;

  /// From bytes that anybody may have made; whatever is damaged, too long or out of range is a new
  /// conversation.
  [[nodiscard]] static Conversation fromState(std::string_view state);
  /// Never empty, so that the end of a game replaces what the client holds.
  [[nodiscard]] std::string state() const;
};

}  // namespace velmora
