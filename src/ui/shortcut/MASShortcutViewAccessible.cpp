// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASShortcutViewAccessible.h"

#include <QCoreApplication>

#include "ui/shortcut/MASShortcutView.h"

namespace velmora {

namespace {

// Above what a screen reader is saying just then; 0 to 100.
[[maybe_unused]] constexpr int kPriority = 90;

}  // namespace

void MASShortcutViewAccessible::install() {
  static const bool installed = [] {
    QAccessible::installFactory([](const QString &, QObject *object) -> QAccessibleInterface * {
      auto *view = qobject_cast<MASShortcutView *>(object);
      return view ? new MASShortcutViewAccessible(*view) : nullptr;
    });
    return true;
  }();
  Q_UNUSED(installed)
}

void MASShortcutViewAccessible::announce(MASShortcutView &view) {
  if (!QAccessible::isActive()) return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  QAccessibleAnnouncementEvent event(&view, view.announcement());
  event.setPoliteness(kPriority > 50 ? QAccessible::AnnouncementPoliteness::Assertive
                                     : QAccessible::AnnouncementPoliteness::Polite);
#else
  // Screen readers read out the description of what gives an alert.
  QAccessibleEvent event(&view, QAccessible::Alert);
#endif
  QAccessible::updateAccessibility(&event);
}

MASShortcutViewAccessible::MASShortcutViewAccessible(MASShortcutView &view)
    : QAccessibleWidget(&view, QAccessible::Button) {}

MASShortcutView &MASShortcutViewAccessible::view() const { return *static_cast<MASShortcutView *>(widget()); }

QString MASShortcutViewAccessible::text(QAccessible::Text kind) const {
  switch (kind) {
    case QAccessible::Name: return QCoreApplication::translate("MASShortcut", "keyboard shortcut");
    case QAccessible::Help:
      return QCoreApplication::translate("MASShortcut",
                                         "To record a new shortcut, click this button, and then type the new "
                                         "shortcut, or press delete to clear an existing shortcut.");
    case QAccessible::Value: return view().title();
    case QAccessible::Description: return view().announcement();
    default: return QAccessibleWidget::text(kind);
  }
}

QAccessible::State MASShortcutViewAccessible::state() const {
  QAccessible::State state = QAccessibleWidget::state();
  state.pressed = view().isRecording();
  return state;
}

QStringList MASShortcutViewAccessible::actionNames() const {
  QStringList names = QAccessibleWidget::actionNames();
  if (view().isEnabled()) names.prepend(pressAction());
  return names;
}

void MASShortcutViewAccessible::doAction(const QString &name) {
  if (name == pressAction()) return view().setRecording(true);
  QAccessibleWidget::doAction(name);
}

}  // namespace velmora
