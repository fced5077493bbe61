// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASShortcutMonitor.h"

#include <QCoreApplication>

#include "platform/hotkeys/HotKeyCenter.h"

namespace velmora {

MASShortcutMonitor &MASShortcutMonitor::sharedMonitor() {
  static MASShortcutMonitor monitor;
  return monitor;
}

MASShortcutMonitor::MASShortcutMonitor() {
  HotKeyCenter::shared().setPressed([this](std::uint32_t carbonID) { handleEvent(carbonID); });
  // While there is still something to release them from.
  qAddPostRoutine([] { sharedMonitor().unregisterAllShortcuts(); });
}

bool MASShortcutMonitor::registerShortcut(const MASShortcut &shortcut, Action action) {
  const auto found = m_hotKeys.find(shortcut);
  if (found != m_hotKeys.end()) {
    found->second->setAction(std::move(action));
    return true;
  }
  auto hotKey = MASHotKey::registeredHotKeyWithShortcut(shortcut);
  if (!hotKey) return false;
  hotKey->setAction(std::move(action));
  m_hotKeys.emplace(shortcut, std::move(hotKey));
  return true;
}

void MASShortcutMonitor::unregisterShortcut(const MASShortcut &shortcut) { m_hotKeys.erase(shortcut); }

void MASShortcutMonitor::unregisterAllShortcuts() { m_hotKeys.clear(); }

bool MASShortcutMonitor::isShortcutRegistered(const MASShortcut &shortcut) const {
  return m_hotKeys.contains(shortcut);
}

void MASShortcutMonitor::handleEvent(std::uint32_t carbonID) const {
  for (const auto &[shortcut, hotKey] : m_hotKeys) {
    if (hotKey->carbonID() != carbonID) continue;
    // A copy: the action may unregister its own shortcut.
    if (const Action action = hotKey->action()) action();
    return;
  }
}

}  // namespace velmora
