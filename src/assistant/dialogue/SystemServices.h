// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>

#include "assistant/dialogue/Skill.h"
#include "assistant/dialogue/StateSeal.h"
#include "assistant/skills/ShoppingList.h"

namespace velmora {

/// The machine's clock and random numbers, and what the assistant keeps on disk. Outlives what uses it.
class SystemServices {
 public:
  /// Keeps the shopping list and the key of the conversations in `folder`. Without a folder, or where the key
  /// cannot be kept (one line in the log), they last as long as this object.
  explicit SystemServices(const std::optional<std::filesystem::path> &folder);

  [[nodiscard]] Services services();
  [[nodiscard]] const StateSeal &seal() const { return m_seal; }

 private:
  ShoppingList m_shoppingList;
  StateSeal m_seal;
};

}  // namespace velmora
