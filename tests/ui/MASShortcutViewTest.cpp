// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The recorder, clicked and typed at by real events.
#include "ui/shortcut/MASShortcutView.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QLineEdit>

#include "platform/Alert.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "ui/shortcut/MASShortcutMonitor.h"

namespace velmora {
namespace {

using enum shortcut_modifier::Flag;
using tests::runUntil;
using tests::xdotool;

const MASShortcut kCommandF1(122, kCommand);
const MASShortcut kCommandF2(120, kCommand);
constexpr std::uint8_t kPositionOfF2 = 68;
constexpr std::uint16_t kSuperMask = 64;

class ShortcutView : public testing::Test {
 protected:
  ShortcutView() {
    for (QWidget *widget : std::initializer_list<QWidget *>{&view, &second, &field}) layout.addWidget(widget);
    field.setFocus();
  }
  void SetUp() override {
    window.show();
    window.activateWindow();
    ASSERT_TRUE(runUntil([this] { return window.isActiveWindow(); }));
  }
  void TearDown() override { setAlertAnswer({}); }

  /// Clicks at a place of the widget's own, or only goes there.
  static bool click(const QWidget &widget, const QPoint &place, bool press = true) {
    const QPoint at = widget.mapToGlobal(place);
    std::vector<std::string> arguments{"mousemove", std::to_string(at.x()), std::to_string(at.y())};
    if (press) arguments.insert(arguments.end(), {"click", "1"});
    return xdotool(arguments);
  }
  [[nodiscard]] std::string shown() const {
    return (view.title() + QLatin1Char('|') + view.hint()).toStdString();
  }
  bool shows(const std::string &text) {
    return runUntil([&] { return shown() == text; });
  }

  QWidget window;
  MASShortcutView view;
  MASShortcutView second;
  QLineEdit field;
  QHBoxLayout layout{&window};
};

TEST_F(ShortcutView, RecordsWhatIsTyped) {
  using Value = std::optional<MASShortcut>;
  const Value none;
  const Value old = kCommandF1;
  struct Case {
    const char *what;
    const char *keys;
    const char *shown;  // ⎋ while it records
    Value before;
    Value after;
  };
  const Case cases[] = {
      {"a shortcut", "super+shift+b", "⇧⌘B|✕", none, MASShortcut(11, kCommand | kShift)},
      {"over an old one", "F5", "F5|✕", old, MASShortcut(96, 0)},
      {"space with Option", "alt+space", "⌥Space|✕", none, MASShortcut(49, kOption)},
      {"a letter with Option is not valid", "alt+b", "Type New Shortcut|⎋", old, old},
      {"a letter with Shift is not valid", "shift+b", "Type New Shortcut|⎋", old, old},
      {"escape keeps", "Escape", "⌘F1|✕", old, old},
      {"delete clears", "BackSpace", "Record Shortcut|", old, none},
      {"with a modifier it is a key", "ctrl+Delete", "⌃⌦|✕", old, MASShortcut(117, kControl)},
      {"tab goes on", "Tab", "Type New Shortcut|⎋", old, old},
      {"close goes on", "super+w", "⌘F1|✕", old, old},
      {"quit goes on", "super+q", "⌘F1|✕", old, old},
      {"quit and more", "super+alt+q", "⌥⌘Q|✕", old, MASShortcut(12, kCommand | kOption)},
  };
  for (const Case &each : cases) {
    SCOPED_TRACE(each.what);
    view.setRecording(false);
    view.setShortcutValue(each.before);
    ASSERT_TRUE(click(view, view.shortcutRect().center()));
    ASSERT_TRUE(shows(each.before ? "Type New Shortcut|⎋" : "Type Shortcut|⎋"));
    field.clear();
    ASSERT_TRUE(xdotool({"key", each.keys}));
    // A key of the field's says that all before it has come.
    const bool records = QString::fromUtf8(each.shown).endsWith(QStringLiteral("⎋"));
    if (!records) {
      ASSERT_TRUE(runUntil([&] { return !view.isRecording(); }));
      field.setFocus();
      ASSERT_TRUE(xdotool({"key", "z"}));
      EXPECT_TRUE(runUntil([&] { return field.text() == QLatin1String("z"); })) << field.text().toStdString();
    }
    EXPECT_TRUE(shows(each.shown)) << shown();
    EXPECT_EQ(view.isRecording(), records);
    EXPECT_EQ(view.shortcutValue(), each.after);
  }
}

TEST_F(ShortcutView, IsWorkedByThePointer) {
  for (const bool full : {false, true}) {
    if (full) view.setShortcutValue(kCommandF1);
    ASSERT_TRUE(click(view, view.shortcutRect().center()));
    ASSERT_TRUE(shows(full ? "Type New Shortcut|⎋" : "Type Shortcut|⎋"));
    ASSERT_TRUE(click(view, view.hintRect().center(), false));
    ASSERT_TRUE(shows(full ? "Use Old Shortcut|⎋" : "Cancel|⎋"));
    ASSERT_TRUE(click(view, view.hintRect().center()));
    ASSERT_TRUE(shows(full ? "⌘F1|✕" : "Record Shortcut|"));
  }
  ASSERT_TRUE(click(view, view.hintRect().center()));
  ASSERT_TRUE(shows("Record Shortcut|"));
  view.setEnabled(false);
  ASSERT_TRUE(click(view, view.rect().center()));
  ASSERT_TRUE(click(second, second.rect().center()));
  EXPECT_TRUE(runUntil([&] { return second.isRecording(); }));
  EXPECT_FALSE(view.isRecording());
}

TEST_F(ShortcutView, RecordsAloneAndWithTheFocusOnly) {
  view.setRecording(true);
  second.setRecording(true);
  EXPECT_FALSE(view.isRecording());
  EXPECT_TRUE(second.isRecording());
  second.setEnabled(false);
  EXPECT_FALSE(second.isRecording());
  view.setRecording(true);
  {
    tests::OtherProgram other;
    EXPECT_TRUE(runUntil([&] { return other.hasFocus() && !view.isRecording(); }));
  }
  view.setRecording(true);
  window.hide();
  EXPECT_FALSE(view.isRecording());
}

TEST_F(ShortcutView, SaysWhatIsTakenAndGoesOn) {
  tests::OtherProgram holder;
  holder.grab(kPositionOfF2, kSuperMask, false);
  window.activateWindow();
  ASSERT_TRUE(runUntil([this] { return window.isActiveWindow(); }));
  std::vector<Alert> alerts;
  setAlertAnswer([&](const Alert &alert) {
    alerts.push_back(alert);
    // Suspended: what is typed meanwhile is for others.
    EXPECT_TRUE(view.isRecording());
    EXPECT_FALSE(QWidget::keyboardGrabber());
    field.setFocus();
    EXPECT_TRUE(xdotool({"key", "z"}));
    EXPECT_TRUE(runUntil([&] { return field.text() == QLatin1String("z"); }));
    return 0;
  });
  view.setRecording(true);
  ASSERT_TRUE(xdotool({"key", "super+F2"}));
  ASSERT_TRUE(runUntil([&] { return !alerts.empty(); }));
  EXPECT_EQ(alerts[0].messageText.toStdString(), "The key combination ⌘F2 cannot be used");
  EXPECT_TRUE(shows("Type Shortcut|⎋"));
  // One's own hot key is no obstacle and does not go off.
  int presses = 0;
  ASSERT_TRUE(MASShortcutMonitor::sharedMonitor().registerShortcut(kCommandF1, [&] { ++presses; }));
  ASSERT_TRUE(xdotool({"key", "super+F1"}));
  EXPECT_TRUE(shows("⌘F1|✕"));
  EXPECT_EQ(alerts.size(), 1U);
  EXPECT_EQ(presses, 0);
  MASShortcutMonitor::sharedMonitor().unregisterAllShortcuts();
}

TEST_F(ShortcutView, IsAButtonForWhoDoesNotSeeIt) {
  QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&view);
  ASSERT_TRUE(accessible);
  EXPECT_EQ(accessible->role(), QAccessible::Button);
  EXPECT_EQ(accessible->text(QAccessible::Name).toStdString(), "keyboard shortcut");
  EXPECT_TRUE(
      accessible->text(QAccessible::Help).startsWith(QLatin1String("To record a new shortcut, click this")));
  accessible->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(view.isRecording());
  EXPECT_TRUE(accessible->state().pressed);
  ASSERT_TRUE(xdotool({"key", "super+F1"}));
  EXPECT_TRUE(shows("⌘F1|✕"));
  EXPECT_EQ(accessible->text(QAccessible::Value).toStdString(), "⌘F1");
  EXPECT_EQ(accessible->text(QAccessible::Description).toStdString(), "Shortcut set");
  view.setRecording(true);
  ASSERT_TRUE(xdotool({"key", "BackSpace"}));
  EXPECT_TRUE(shows("Record Shortcut|"));
  EXPECT_EQ(accessible->text(QAccessible::Description).toStdString(), "Shortcut cleared");
}

}  // namespace
}  // namespace velmora
