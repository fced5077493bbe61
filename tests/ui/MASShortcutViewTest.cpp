// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The recorder, clicked and typed at by real events.
#include "ui/shortcut/MASShortcutView.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QLineEdit>
#include <QToolTip>

#include "platform/Alert.h"
#include "support/CapturedLog.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "ui/shortcut/MASDictionaryTransformer.h"
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

  /// Clicks at a place of the view's own.
  bool click(const QWidget &widget, const QPoint &place) {
    const QPoint at = widget.mapToGlobal(place);
    return xdotool({"mousemove", std::to_string(at.x()), std::to_string(at.y()), "click", "1"});
  }
  bool hover(const QWidget &widget, const QPoint &place) {
    const QPoint at = widget.mapToGlobal(place);
    return xdotool({"mousemove", std::to_string(at.x()), std::to_string(at.y())});
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
  enum class Start { empty, full };
  struct Case {
    const char *what;
    Start start;
    std::vector<std::string> keys;
    std::optional<MASShortcut> value;
    bool recording;
    const char *shown;
  };
  const Case cases[] = {
      {"a shortcut",
       Start::empty,
       {"key", "super+shift+b"},
       MASShortcut(11, kCommand | kShift),
       false,
       "⇧⌘B|✕"},
      {"over an old one", Start::full, {"key", "F5"}, MASShortcut(96, 0), false, "F5|✕"},
      {"not valid", Start::full, {"key", "shift+b"}, kCommandF1, true, "Type New Shortcut|⎋"},
      {"escape keeps", Start::full, {"key", "Escape"}, kCommandF1, false, "⌘F1|✕"},
      {"escape without a value", Start::empty, {"key", "Escape"}, {}, false, "Record Shortcut|"},
      {"delete clears", Start::full, {"key", "BackSpace"}, {}, false, "Record Shortcut|"},
      {"forward delete clears", Start::full, {"key", "Delete"}, {}, false, "Record Shortcut|"},
      {"with a modifier it is a key",
       Start::full,
       {"key", "ctrl+Delete"},
       MASShortcut(117, kControl),
       false,
       "⌃⌦|✕"},
      {"tab goes on", Start::full, {"key", "Tab"}, kCommandF1, true, "Type New Shortcut|⎋"},
      {"close goes on", Start::full, {"key", "super+w"}, kCommandF1, false, "⌘F1|✕"},
      {"quit goes on", Start::full, {"key", "super+q"}, kCommandF1, false, "⌘F1|✕"},
      {"quit and more",
       Start::full,
       {"key", "super+alt+q"},
       MASShortcut(12, kCommand | kOption),
       false,
       "⌥⌘Q|✕"},
      {"held modifiers",
       Start::full,
       {"keydown", "shift", "keydown", "super", "keydown", "ctrl"},
       kCommandF1,
       true,
       "⌃⇧⌘|⎋"},
  };
  for (const Case &each : cases) {
    SCOPED_TRACE(each.what);
    view.setRecording(false);
    view.setShortcutValue(each.start == Start::full ? std::optional(kCommandF1) : std::nullopt);
    ASSERT_TRUE(click(view, view.shortcutRect().center()));
    ASSERT_TRUE(shows(each.start == Start::full ? "Type New Shortcut|⎋" : "Type Shortcut|⎋"));
    field.clear();
    ASSERT_TRUE(xdotool(each.keys));
    // A key of the field's says that all before it has come.
    if (!each.recording) {
      ASSERT_TRUE(runUntil([&] { return !view.isRecording(); }));
      field.setFocus();
      ASSERT_TRUE(xdotool({"key", "z"}));
      EXPECT_TRUE(runUntil([&] { return field.text() == QLatin1String("z"); })) << field.text().toStdString();
    }
    EXPECT_TRUE(shows(each.shown)) << shown();
    EXPECT_EQ(view.isRecording(), each.recording);
    EXPECT_EQ(view.shortcutValue(), each.value);
  }
  ASSERT_TRUE(xdotool({"keyup", "ctrl"}));
  EXPECT_TRUE(shows("⇧⌘|⎋"));
  ASSERT_TRUE(xdotool({"keyup", "super", "keyup", "shift"}));
  EXPECT_TRUE(shows("Type New Shortcut|⎋"));
}

TEST_F(ShortcutView, IsWorkedByThePointer) {
  const auto hint = [this] { return view.hintRect().center(); };
  ASSERT_TRUE(click(view, view.rect().center()));
  ASSERT_TRUE(shows("Type Shortcut|⎋"));
  ASSERT_TRUE(hover(view, hint()));
  ASSERT_TRUE(shows("Cancel|⎋"));
  ASSERT_TRUE(click(view, hint()));
  ASSERT_TRUE(shows("Record Shortcut|"));
  view.setShortcutValue(kCommandF1);
  ASSERT_TRUE(click(view, view.shortcutRect().center()));
  ASSERT_TRUE(shows("Type New Shortcut|⎋"));
  ASSERT_TRUE(hover(view, hint()));
  ASSERT_TRUE(shows("Use Old Shortcut|⎋"));
  ASSERT_TRUE(click(view, hint()));
  ASSERT_TRUE(shows("⌘F1|✕"));

  const auto toolTip = [this](const QPoint &place) {
    QHelpEvent event(QEvent::ToolTip, place, view.mapToGlobal(place));
    QApplication::sendEvent(&view, &event);
    return QToolTip::text().toStdString();
  };
  EXPECT_EQ(toolTip(hint()), "Delete shortcut");
  EXPECT_EQ(toolTip(view.shortcutRect().center()), "Click to record new shortcut");
  ASSERT_TRUE(click(view, hint()));
  ASSERT_TRUE(shows("Record Shortcut|"));
  view.setShortcutValue(kCommandF1);
  view.setShowsDeleteButton(false);
  EXPECT_EQ(shown(), "⌘F1|");
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
  view.setEnabled(false);
  view.setRecording(true);
  EXPECT_FALSE(view.isRecording());
  EXPECT_TRUE(second.isRecording());
  second.setEnabled(false);
  EXPECT_FALSE(second.isRecording());
  view.setEnabled(true);
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
  EXPECT_TRUE(alerts[0].informativeText.startsWith(QLatin1String("This combination cannot be used because")));
  EXPECT_EQ(alerts[0].buttons, QStringList{QStringLiteral("OK")});
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

class OneWayTransformer final : public ValueTransformer {
 public:
  [[nodiscard]] bool allowsReverseTransformation() const override { return false; }
  [[nodiscard]] QVariant transformedValue(const QVariant &) const override { return variantOf(kCommandF2); }
  [[nodiscard]] QVariant reverseTransformedValue(const QVariant &) const override { return {}; }
};

TEST_F(ShortcutView, KeepsItsValueInTheSettings) {
  UserDefaults &defaults = UserDefaults::standard();
  const QString key = QStringLiteral("customShortcut");
  defaults.registerDefaults({{key, kCommandF1.archivedData()}});
  int changes = 0;
  view.setShortcutValueChange([&](MASShortcutView &) { ++changes; });
  view.setAssociatedUserDefaultsKey(key);
  EXPECT_EQ(view.shortcutValue(), kCommandF1);
  second.setAssociatedUserDefaultsKeyWithTransformerName(key, QStringLiteral("MASDictionaryTransformer"));
  view.setShortcutValue(kCommandF2);
  EXPECT_EQ(defaults.dictionaryForKey(key).value(QStringLiteral("keyCode")).toInt(), 120);
  EXPECT_EQ(second.shortcutValue(), kCommandF2);
  second.setShortcutValue({});
  EXPECT_EQ(view.shortcutValue(), std::nullopt);
  EXPECT_EQ(changes, 3);
  view.setAssociatedUserDefaultsKey(QString());
  view.setShortcutValue(kCommandF1);
  EXPECT_EQ(second.shortcutValue(), std::nullopt);

  struct Case {
    MASShortcutView::Binding binding;
    const char *line;
  };
  for (const Case &each : {
           Case{{&defaults, key, std::make_shared<OneWayTransformer>()},
                "Shortcut view warning: the binding shortcutValue has a transformer that works one way only"},
           Case{{nullptr, key, nullptr},
                "Shortcut view error: the binding shortcutValue lacks its observed object"},
           Case{{&defaults, QString(), nullptr},
                "Shortcut view error: the binding shortcutValue lacks its key path"},
       }) {
    view.bind(each.binding);
    const tests::CapturedLog log;
    view.setShortcutValue(kCommandF1);
    EXPECT_EQ(log.lines(), std::vector<std::string>{each.line});
    EXPECT_EQ(view.shortcutValue(), kCommandF1);
    EXPECT_TRUE(defaults.dictionaryForKey(key).isEmpty());
  }
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
