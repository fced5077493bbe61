// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASHotKey.h"

#include "foundation/Log.h"
#include "platform/hotkeys/HotKeyCenter.h"

namespace velmora {

namespace {

std::uint32_t nextID() {
  static std::uint32_t last = 0;
  return ++last;
}

}  // namespace

std::unique_ptr<MASHotKey> MASHotKey::registeredHotKeyWithShortcut(const MASShortcut &shortcut) {
  std::unique_ptr<MASHotKey> hotKey(new MASHotKey(shortcut));
  return hotKey->m_hotKeyRef == HotKeyRef::held ? std::move(hotKey) : nullptr;
}

MASHotKey::MASHotKey(const MASShortcut &shortcut) : m_carbonID(nextID()) {
  const auto error =
      HotKeyCenter::shared().registerHotKey(m_carbonID, shortcut.carbonKeyCode(), shortcut.carbonFlags());
  if (error) {
    log("Hot key error: ", shortcut.description().toStdString(), ": ", *error);
  } else {
    m_hotKeyRef = HotKeyRef::held;
  }
}

MASHotKey::~MASHotKey() {
  if (m_hotKeyRef == HotKeyRef::held) HotKeyCenter::shared().unregisterHotKey(m_carbonID);
}

}  // namespace velmora
