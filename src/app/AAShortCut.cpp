// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/AAShortCut.h"

#include "foundation/NotificationCenter.h"
#include "ui/shortcut/MASShortcutBinder.h"
#include "ui/shortcut/MASShortcutMonitor.h"
#include "ui/shortcut/MASShortcutView.h"

namespace velmora {

namespace {

const QString kHardcodedShortcutEnabled = QStringLiteral("hardcodedShortcutEnabled");
const QString kCustomShortcutEnabled = QStringLiteral("customShortcutEnabled");
const QString kCustomShortcut = QStringLiteral("customShortcut");

const MASShortcut kCommandF1(122, shortcut_modifier::kCommand);
const MASShortcut kCommandF2(120, shortcut_modifier::kCommand);

}  // namespace

AAShortCut::AAShortCut(MASShortcutView &view) {
  using Notify = UserDefaults::Notify;
  UserDefaults &defaults = UserDefaults::standard();
  defaults.registerDefaults({{kHardcodedShortcutEnabled, true},
                             {kCustomShortcutEnabled, true},
                             {kCustomShortcut, kCommandF1.archivedData()}});
  view.setAssociatedUserDefaultsKey(kCustomShortcut);
  m_viewEnabled = defaults.addObserver(kCustomShortcutEnabled, Notify::initialAndNew,
                                       [&view](const QVariant &value) { view.setEnabled(value.toBool()); });
  m_customEnabled = defaults.addObserver(
      kCustomShortcutEnabled, Notify::initialAndNew,
      [this](const QVariant &value) { observeValue(kCustomShortcutEnabled, value.toBool()); });
  m_hardcodedEnabled = defaults.addObserver(
      kHardcodedShortcutEnabled, Notify::initialAndNew,
      [this](const QVariant &value) { observeValue(kHardcodedShortcutEnabled, value.toBool()); });
}

void AAShortCut::observeValue(const QString &keyPath, bool value) {
  if (keyPath == kCustomShortcutEnabled) {
    setCustomShortcutEnabled(value);
  } else if (keyPath == kHardcodedShortcutEnabled) {
    setHardcodedShortcutEnabled(value);
  }
}

// The monitor and the binder have one action a shortcut, which belongs to no single object: another one may
// have been there before and may stay longer.

void AAShortCut::setCustomShortcutEnabled(bool enabled) {
  MASShortcutBinder &binder = MASShortcutBinder::sharedBinder();
  if (enabled) {
    binder.bindShortcutWithDefaultsKey(kCustomShortcut, playShortcutFeedback);
  } else {
    binder.breakBindingWithDefaultsKey(kCustomShortcut);
  }
}

void AAShortCut::setHardcodedShortcutEnabled(bool enabled) {
  MASShortcutMonitor &monitor = MASShortcutMonitor::sharedMonitor();
  if (enabled) {
    monitor.registerShortcut(kCommandF2, playShortcutFeedback);
  } else {
    monitor.unregisterShortcut(kCommandF2);
  }
}

void AAShortCut::playShortcutFeedback() {
  const QVariantMap object{{QStringLiteral("hello"), QStringLiteral("hello")}};
  NotificationCenter::defaultCenter().post(QString::fromUtf16(kShortCutPress), object);
}

}  // namespace velmora
