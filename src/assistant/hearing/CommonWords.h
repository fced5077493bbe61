// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What people say to one another, for the recogniser to tell it from what is meant for the assistant.
#pragma once

#include <string>
#include <vector>

namespace velmora {

/// The hundred words that ordinary speech is full of.
[[nodiscard]] const std::vector<std::string> &frequentWords();
/// Several hundred more of all kinds; none of them is among the frequent ones.
[[nodiscard]] const std::vector<std::string> &otherCommonWords();

}  // namespace velmora
