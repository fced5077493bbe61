// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <unordered_map>

#include "ui/shortcut/MASHotKey.h"
#include "ui/shortcut/MASShortcut.h"

namespace velmora {

/// Calls an action when a shortcut is pressed, whichever window has the focus. Main thread.
class MASShortcutMonitor {
 public:
  using Action = MASHotKey::Action;

  static MASShortcutMonitor &sharedMonitor();

  MASShortcutMonitor(const MASShortcutMonitor &) = delete;
  MASShortcutMonitor &operator=(const MASShortcutMonitor &) = delete;

  /// A shortcut has one action: registered again it gets the new one. False, after one line in the log, when
  /// the desktop refuses it.
  bool registerShortcut(const MASShortcut &shortcut, Action action);
  void unregisterShortcut(const MASShortcut &shortcut);
  void unregisterAllShortcuts();
  [[nodiscard]] bool isShortcutRegistered(const MASShortcut &shortcut) const;

 private:
  MASShortcutMonitor();

  void handleEvent(std::uint32_t carbonID) const;

  std::unordered_map<MASShortcut, std::unique_ptr<MASHotKey>> m_hotKeys;
};

}  // namespace velmora
