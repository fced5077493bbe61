// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
// The keys that a view takes while it records.
#include <QApplication>
#include <QKeyEvent>
#include <QPointer>

#include "platform/Alert.h"
#include "ui/shortcut/MASShortcutView.h"

namespace velmora {

namespace {

using enum shortcut_modifier::Flag;

constexpr std::uint32_t kQ = 12;
constexpr std::uint32_t kW = 13;
constexpr std::uint32_t kTab = 48;
constexpr std::uint32_t kDelete = 51;
constexpr std::uint32_t kEscape = 53;
constexpr std::uint32_t kForwardDelete = 117;

bool isPassedOn(const MASShortcut &shortcut) {
  if (shortcut.keyCode() == kTab) return true;
  return shortcut.modifierFlags() == kCommand && (shortcut.keyCode() == kW || shortcut.keyCode() == kQ);
}

}  // namespace

void MASShortcutView::activateEventMonitoring(bool active) {
  if (m_monitoring == active) return;
  m_monitoring = active;
  if (active) {
    qApp->installEventFilter(this);
    // Combinations that the desktop or this program act on come here as well then.
    grabKeyboard();
  } else {
    releaseKeyboard();
    qApp->removeEventFilter(this);
  }
}

bool MASShortcutView::eventFilter(QObject *watched, QEvent *event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride: {
      // The toolkit asks so before it looks for a menu item; accepted, the key comes as a press.
      const auto shortcut = MASShortcut::shortcutWithEvent(*static_cast<QKeyEvent *>(event));
      if (isPassedOn(shortcut)) {
        // To a menu item perhaps, and then it comes no more.
        if (shortcut.keyCode() != kTab) setRecording(false);
        return false;
      }
      event->accept();
      return true;
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
      // A press goes to the window first and to the widget then; it is judged once.
      if (!watched->isWidgetType()) return false;
      return swallows(*static_cast<QKeyEvent *>(event));
    case QEvent::WindowDeactivate:
      if (watched == window()) setRecording(false);
      return false;
    default: return QWidget::eventFilter(watched, event);
  }
}

bool MASShortcutView::swallows(const QKeyEvent &event) {
  const auto shortcut = MASShortcut::shortcutWithEvent(event);
  const std::uint32_t key = shortcut.keyCode();
  const std::uint32_t modifiers = shortcut.modifierFlags();
  const bool modifiersOnly = shortcut.keyCodeString().isEmpty();
  // Of what is released only the modifiers matter.
  if (event.type() == QEvent::KeyRelease && !modifiersOnly) return false;

  if (key == kTab) return false;
  if (modifiers == 0 && (key == kDelete || key == kForwardDelete)) {
    setShortcutValue({});
    setRecording(false);
  } else if (modifiers == 0 && key == kEscape) {
    setRecording(false);
  } else if (isPassedOn(shortcut)) {
    setRecording(false);
    return false;
  } else if (modifiersOnly) {
    setShortcutPlaceholder(shortcut.modifierFlagsString());
  } else {
    take(shortcut);
  }
  return true;
}

void MASShortcutView::take(const MASShortcut &shortcut) {
  if (!m_shortcutValidator->isShortcutValid(shortcut)) {
    QApplication::beep();
  } else if (const auto explanation = m_shortcutValidator->isShortcutAlreadyTakenBySystem(shortcut)) {
    showTaken(shortcut, *explanation);
  } else {
    setShortcutValue(shortcut);
    setRecording(false);
  }
}

void MASShortcutView::showTaken(const MASShortcut &shortcut, const QString &explanation) {
  activateEventMonitoring(false);
  const QPointer<MASShortcutView> self(this);
  showAlert(
      {.messageText = QCoreApplication::translate("MASShortcut", "The key combination %@ cannot be used")
                          .replace(QLatin1String("%@"), shortcut.description()),
       .informativeText = explanation,
       .style = AlertStyle::critical,
       .buttons = {QCoreApplication::translate("MASShortcut", "OK")}},
      window());
  // Meanwhile it may have been destroyed, or told to stop.
  if (!self || !m_recording) return;
  setShortcutPlaceholder(QString());
  activateEventMonitoring(true);
}

}  // namespace velmora
