// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace velmora {

/// A combination that the desktop itself acts on: a virtual key code and bits of `hot_key_modifier`.
struct SymbolicHotKey {
  std::uint32_t keyCode;
  std::uint32_t modifiers;
  bool enabled;

  bool operator==(const SymbolicHotKey &) const = default;
};

/// What the desktop's settings held when they were last read; nothing where they have not been read, or
/// cannot be. Returns at once. Main thread.
[[nodiscard]] std::optional<std::vector<SymbolicHotKey>> copySymbolicHotKeys();

/// Begins to read them anew, in the background. Main thread.
void refreshSymbolicHotKeys();

}  // namespace velmora
