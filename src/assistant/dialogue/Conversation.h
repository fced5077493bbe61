// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What a conversation remembers between two requests.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Something that the assistant has asked and that is not answered yet.
struct PendingQuestion {
  std::string name;                        ///< which of the questions of the skills
  std::map<std::string, int> values = {};  ///< what its skill remembers
  int misses = 0;  ///< how often in a row it was answered with silence or not understood
};

struct Conversation {
  std::optional<PendingQuestion> question = {};
  std::string lastAnswer = {};  ///< to be said again; empty when it was too long to be kept

  /// From what `text()` gave; nothing when it is anything else.
  [[nodiscard]] static std::optional<Conversation> fromText(std::string_view text);
  [[nodiscard]] std::string text() const;
};

}  // namespace velmora
