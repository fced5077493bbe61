// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASShortcutValidator.h"

#include <QAction>
#include <QApplication>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <algorithm>
#include <iterator>

#include "platform/hotkeys/HotKeyCenter.h"
#include "platform/hotkeys/SymbolicHotKeys.h"

namespace velmora {

namespace {

using enum shortcut_modifier::Flag;

constexpr std::uint32_t kFunctionKeys[] = {64,  79,  80,  90,  96,  97,  98,  99,  100, 101,
                                           103, 105, 106, 107, 109, 111, 113, 118, 120, 122};
constexpr std::uint32_t kSpace = 49;
constexpr std::uint32_t kEscape = 53;

bool isTaken(const MASShortcut &shortcut) {
  if (const auto hotKeys = copySymbolicHotKeys()) {
    const bool matches = std::any_of(hotKeys->begin(), hotKeys->end(), [&](const SymbolicHotKey &hotKey) {
      return hotKey.keyCode == shortcut.carbonKeyCode() && hotKey.modifiers == shortcut.carbonFlags() &&
             hotKey.enabled;
    });
    if (matches) return true;
  }
  return HotKeyCenter::shared().isHeldByAnother(shortcut.carbonKeyCode(), shortcut.carbonFlags());
}

QKeySequence keyEquivalent(const MASShortcut &shortcut) {
  const QString key = shortcut.keyCodeStringForKeyEquivalent();
  if (key.isEmpty()) return {};
  QString text;
  const std::uint32_t flags = shortcut.modifierFlags();
  if (flags & kCommand) text += QLatin1String("Meta+");
  if (flags & kControl) text += QLatin1String("Ctrl+");
  if (flags & kOption) text += QLatin1String("Alt+");
  if (flags & kShift) text += QLatin1String("Shift+");
  return QKeySequence::fromString(text + key, QKeySequence::PortableText);
}

/// The title as it is shown: without the marks of the keys that open it.
QString titleOf(const QAction &item) {
  QString title = item.text();
  title.truncate(title.indexOf(QLatin1Char('\t')) < 0 ? title.size() : title.indexOf(QLatin1Char('\t')));
  QString shown;
  for (qsizetype i = 0; i < title.size(); ++i) {
    if (title[i] == QLatin1Char('&') && ++i == title.size()) break;
    shown += title[i];
  }
  return shown;
}

const QAction *itemWith(const QKeySequence &keys, const QList<QAction *> &menu) {
  for (const QAction *item : menu) {
    if (item->shortcuts().contains(keys)) return item;
    const QMenu *below = item->menu();
    if (const QAction *found = below ? itemWith(keys, below->actions()) : nullptr) return found;
  }
  return nullptr;
}

}  // namespace

MASShortcutValidator &MASShortcutValidator::sharedValidator() {
  static MASShortcutValidator validator;
  return validator;
}

bool MASShortcutValidator::isShortcutValid(const MASShortcut &shortcut) const {
  const std::uint32_t flags = shortcut.modifierFlags() & kAll;
  const std::uint32_t key = shortcut.keyCode();
  if (std::find(std::begin(kFunctionKeys), std::end(kFunctionKeys), key) != std::end(kFunctionKeys))
    return true;
  if (flags == 0) return false;
  if (flags & (kCommand | kControl)) return true;
  if (flags & kOption) return key == kSpace || key == kEscape || m_allowAnyShortcutWithOptionModifier;
  return false;
}

std::optional<QString> MASShortcutValidator::isShortcutAlreadyTakenBySystem(
    const MASShortcut &shortcut) const {
  if (isTaken(shortcut)) {
    return QCoreApplication::translate("MASShortcut",
                                       "This combination cannot be used because it is already used by a "
                                       "system-wide keyboard shortcut.\nIf you "
                                       "really want to use this key combination, most shortcuts can be "
                                       "changed in the Keyboard & Mouse panel in "
                                       "System Preferences.");
  }
  for (const QWidget *window : QApplication::topLevelWidgets()) {
    for (const QMenuBar *bar : window->findChildren<QMenuBar *>()) {
      if (auto explanation = isShortcutAlreadyTakenInMenu(shortcut, bar->actions())) return explanation;
    }
  }
  return {};
}

std::optional<QString> MASShortcutValidator::isShortcutAlreadyTakenInMenu(
    const MASShortcut &shortcut, const QList<QAction *> &menu) const {
  const QKeySequence keys = keyEquivalent(shortcut);
  const QAction *item = keys.isEmpty() ? nullptr : itemWith(keys, menu);
  if (!item) return {};
  return QCoreApplication::translate(
             "MASShortcut", "This shortcut cannot be used because it is already used by the menu item ‘%@’.")
      .replace(QLatin1String("%@"), titleOf(*item));
}

}  // namespace velmora
