// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QString>
#include <optional>

#include "ui/shortcut/MASShortcut.h"

class QAction;

namespace velmora {

/// Which shortcuts may be recorded. Main thread.
class MASShortcutValidator {
 public:
  static MASShortcutValidator &sharedValidator();

  /// Whether Option alone makes a shortcut of any key; it writes characters on many keyboards. No at first.
  [[nodiscard]] bool allowAnyShortcutWithOptionModifier() const {
    return m_allowAnyShortcutWithOptionModifier;
  }
  void setAllowAnyShortcutWithOptionModifier(bool allow) { m_allowAnyShortcutWithOptionModifier = allow; }

  [[nodiscard]] bool isShortcutValid(const MASShortcut &shortcut) const;

  /// Why the desktop, another program or the application's menu bar has the shortcut already; nothing when it
  /// is free.
  [[nodiscard]] std::optional<QString> isShortcutAlreadyTakenBySystem(const MASShortcut &shortcut) const;
  /// The same of a menu's items and those of the menus below it.
  [[nodiscard]] std::optional<QString> isShortcutAlreadyTakenInMenu(const MASShortcut &shortcut,
                                                                    const QList<QAction *> &menu) const;

 private:
  bool m_allowAnyShortcutWithOptionModifier = false;
};

}  // namespace velmora
