// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASShortcutBinder.h"

#include "ui/shortcut/MASDictionaryTransformer.h"

namespace velmora {

MASShortcutBinder &MASShortcutBinder::sharedBinder() {
  static MASShortcutBinder binder(UserDefaults::standard(), MASShortcutMonitor::sharedMonitor());
  return binder;
}

MASShortcutBinder::MASShortcutBinder(UserDefaults &defaults, MASShortcutMonitor &monitor)
    : m_defaults(defaults),
      m_shortcutMonitor(monitor),
      m_bindingOptions{
          {QString::fromUtf16(kValueTransformer), std::make_shared<MASDictionaryTransformer>()}} {}

void MASShortcutBinder::bindShortcutWithDefaultsKey(const QString &key, Action action) {
  breakBindingWithDefaultsKey(key);
  m_actions[key] = std::move(action);
  const auto transformer = m_bindingOptions.value(QString::fromUtf16(kValueTransformer));
  m_observations[key] = m_defaults.addObserver(
      key, UserDefaults::Notify::initialAndNew, [this, key, transformer](const QVariant &value) {
        setShortcut(key, shortcutOf(transformer ? transformer->transformedValue(value) : value));
      });
}

void MASShortcutBinder::breakBindingWithDefaultsKey(const QString &key) {
  m_observations.erase(key);
  setShortcut(key, {});
  m_actions.erase(key);
}

void MASShortcutBinder::registerDefaultShortcuts(const QHash<QString, MASShortcut> &shortcuts) {
  const auto transformer = m_bindingOptions.value(QString::fromUtf16(kValueTransformer));
  QVariantMap values;
  for (auto each = shortcuts.begin(); each != shortcuts.end(); ++each) {
    const QVariant value = variantOf(each.value());
    values[each.key()] = transformer ? transformer->reverseTransformedValue(value) : value;
  }
  m_defaults.registerDefaults(values);
}

void MASShortcutBinder::setShortcut(const QString &key, const std::optional<MASShortcut> &shortcut) {
  const auto before = m_shortcuts.find(key);
  if (before != m_shortcuts.end()) {
    if (shortcut == before->second) return;
    m_shortcutMonitor.unregisterShortcut(before->second);
    m_shortcuts.erase(before);
  }
  if (!shortcut) return;
  m_shortcuts.emplace(key, *shortcut);
  m_shortcutMonitor.registerShortcut(*shortcut, [this, key] {
    // The one of this moment, and a copy: it may break its own binding.
    const auto found = m_actions.find(key);
    if (found == m_actions.end()) return;
    if (const Action action = found->second) action();
  });
}

}  // namespace velmora
