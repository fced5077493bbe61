// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "ui/shortcut/MASShortcut.h"

namespace velmora {

/// Whether a `MASHotKey` holds its combination.
enum class HotKeyRef { none, held };

/// A combination registered with the desktop, for as long as the object lives. Main thread.
class MASHotKey {
 public:
  using Action = std::function<void()>;

  /// Null, after one line in the log, when the desktop refuses the combination.
  [[nodiscard]] static std::unique_ptr<MASHotKey> registeredHotKeyWithShortcut(const MASShortcut &shortcut);

  ~MASHotKey();
  MASHotKey(const MASHotKey &) = delete;
  MASHotKey &operator=(const MASHotKey &) = delete;

  /// Unlike that of any other hot key of this run.
  [[nodiscard]] std::uint32_t carbonID() const { return m_carbonID; }
  [[nodiscard]] HotKeyRef hotKeyRef() const { return m_hotKeyRef; }
  [[nodiscard]] const Action &action() const { return m_action; }
  void setAction(Action action) { m_action = std::move(action); }

 private:
  explicit MASHotKey(const MASShortcut &shortcut);

  const std::uint32_t m_carbonID;
  HotKeyRef m_hotKeyRef = HotKeyRef::none;
  Action m_action;
};

}  // namespace velmora
