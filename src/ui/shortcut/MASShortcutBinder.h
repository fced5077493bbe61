// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QString>
#include <QVariant>
#include <map>
#include <memory>
#include <optional>

#include "foundation/UserDefaults.h"
#include "ui/shortcut/MASShortcutMonitor.h"
#include "ui/shortcut/ValueTransformer.h"

namespace velmora {

/// Keeps an action under the shortcut that the user's settings hold, which may change. Main thread.
class MASShortcutBinder {
 public:
  using Action = MASShortcutMonitor::Action;
  /// By name; `kValueTransformer` is the transformer from what is stored to a shortcut.
  using Options = QHash<QString, std::shared_ptr<const ValueTransformer>>;
  static constexpr char16_t kValueTransformer[] = u"NSValueTransformer";

  static MASShortcutBinder &sharedBinder();

  /// The defaults outlive the binder.
  MASShortcutBinder(UserDefaults &defaults, MASShortcutMonitor &monitor);
  MASShortcutBinder(const MASShortcutBinder &) = delete;
  MASShortcutBinder &operator=(const MASShortcutBinder &) = delete;

  [[nodiscard]] MASShortcutMonitor &shortcutMonitor() const { return m_shortcutMonitor; }
  [[nodiscard]] const Options &bindingOptions() const { return m_bindingOptions; }
  /// For what is bound from now on.
  void setBindingOptions(Options options) { m_bindingOptions = std::move(options); }

  /// Registers what is stored under `key` now and whenever it changes. A key has one action: bound again it
  /// gets the new one.
  void bindShortcutWithDefaultsKey(const QString &key, Action action);
  void breakBindingWithDefaultsKey(const QString &key);
  [[nodiscard]] bool isRegisteredAction(const QString &key) const { return m_actions.contains(key); }

  /// Shortcuts that hold where none is stored.
  void registerDefaultShortcuts(const QHash<QString, MASShortcut> &shortcuts);

 private:
  void setShortcut(const QString &key, const std::optional<MASShortcut> &shortcut);

  UserDefaults &m_defaults;
  MASShortcutMonitor &m_shortcutMonitor;
  Options m_bindingOptions;
  std::map<QString, Action> m_actions;
  std::map<QString, MASShortcut> m_shortcuts;
  std::map<QString, UserDefaults::Observation> m_observations;
};

}  // namespace velmora
