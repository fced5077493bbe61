// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The preferences as a person uses them: a real window and real keys.
#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSlider>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTranslator>

#include "auth/TokenStore.h"
#include "foundation/Deployment.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "support/SoundServer.h"
#include "ui/Translations.h"
#include "ui/preferences/PreferenceKeys.h"
#include "ui/preferences/PreferencesWindowController.h"
#include "ui/shortcut/MASShortcutBinder.h"
#include "ui/shortcut/MASShortcutView.h"

namespace velmora {
namespace {

using testing::ElementsAre;
using tests::runUntil;

const ApplicationInformation kInformation = ApplicationInformation::ofThisBuild({
    .forum = "https://forum.example/",
    .fanPage = "https://fans.example/",
    .microblog = "https://blog.example/",
    .home = "https://home.example/",
});
const QString kShortcutKey = QStringLiteral("customShortcut");

struct PreferencesTest : testing::Test {
  PreferencesTest() { defaults.setObject(true, kLoggedInKey); }
  void SetUp() override {
    window.showWindow();
    ASSERT_TRUE(runUntil([&] { return window.isActiveWindow(); }));
  }
  /// Types it and waits for what it brings.
  template <typename Condition>
  static bool after(const char *key, const Condition &condition) {
    return tests::xdotool({"key", key}) && runUntil(condition);
  }
  template <typename Widget>
  static Widget &part(const QWidget &window, const char *name) {
    return *window.findChild<Widget *>(QString::fromLatin1(name));
  }

  UserDefaults &defaults = UserDefaults::standard();
  PreferencesWindowController window{kInformation, defaults};
};

TEST_F(PreferencesTest, MnemonicsSwitchAndStoreAndEveryWindowShowsIt) {
  PreferencesWindowController other(kInformation, defaults);
  other.showWindow();
  other.close();
  ASSERT_TRUE(runUntil([&] { return window.isActiveWindow(); }));
  const QString entry = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                        QStringLiteral("/autostart/com.brindlewick.GAHelperApp.desktop");
  for (const auto &[keys, name, setting] :
       {std::tuple("alt+l", "hotwordCheckBox", kHotwordEnableKey),
        std::tuple("alt+r", "runAtLaunchCheckBox", kRunAtLaunchEnableKey)}) {
    EXPECT_FALSE(defaults.objectForKey(setting).isValid()) << "never stored";
    for (const bool on : {true, false, true}) {
      EXPECT_TRUE(after(keys, [&, key = setting] { return defaults.objectForKey(key) == QVariant(on); }));
      EXPECT_EQ(part<QCheckBox>(other, name).isChecked(), on) << name;
      EXPECT_TRUE(setting == kHotwordEnableKey || QFile::exists(entry) == on);
    }
  }
  // Volume by the keyboard, the language by the list.
  EXPECT_TRUE(after("alt+v", [&] { return part<QSlider>(window, "volumeSlider").hasFocus(); }));
  EXPECT_TRUE(after("Left", [&] { return defaults.objectForKey(kAnswerVolumeKey).toInt() == 90; }));
  EXPECT_EQ(part<QSlider>(other, "volumeSlider").value(), 90);
  EXPECT_TRUE(after("alt+n", [&] { return part<QComboBox>(window, "languageBox").hasFocus(); }));
  for (const auto &[key, code] : {std::pair("Down", "en"), {"Down", "de"}, {"Home", ""}}) {
    const QString wanted = QString::fromLatin1(code);
    EXPECT_TRUE(after(key, [&] { return defaults.stringForKey(kLanguageKey) == wanted; })) << code;
    EXPECT_EQ(part<QComboBox>(other, "languageBox").currentData().toString(), wanted);
  }
  const auto &state = part<QLabel>(other, "accountState");
  EXPECT_EQ(state.text().toStdString(), "You are signed in.");
  EXPECT_TRUE(after("alt+o", [&] { return defaults.objectForKey(kLoggedInKey) == QVariant(false); }));
  EXPECT_EQ(state.text().toStdString(), "You are not signed in.");
  EXPECT_FALSE(part<QPushButton>(other, "signOutButton").isEnabled());
}

TEST_F(PreferencesTest, EscapeEndsTheRecordingBeforeTheWindow) {
  MASShortcutView &recorder = window.shortcutView();
  EXPECT_TRUE(after("alt+m", [&] { return !recorder.hasFocus(); }));
  EXPECT_TRUE(after("alt+s", [&] { return recorder.hasFocus(); }));
  for (const char *keys : {"Escape", "super+shift+b"}) {
    EXPECT_TRUE(after("space", [&] { return recorder.isRecording(); }));
    EXPECT_TRUE(after(keys, [&] { return !recorder.isRecording(); }));
    EXPECT_TRUE(window.isVisible());
  }
  EXPECT_TRUE(defaults.objectForKey(kShortcutKey).isValid());
  EXPECT_TRUE(after("Escape", [&] { return !window.isVisible(); }));
}

TEST_F(PreferencesTest, SaysOfTheShortcutThatAnotherProgramHoldsIt) {
  tests::OtherProgram holder;
  holder.grab(68, 64, false);  // the position of F2, with Super
  MASShortcutBinder &binder = MASShortcutBinder::sharedBinder();
  binder.bindShortcutWithDefaultsKey(kShortcutKey, [] {});
  const auto &note = part<QLabel>(window, "shortcutNote");
  for (const std::uint32_t keyCode : {120U, 122U, 120U}) {  // F2, F1
    window.shortcutView().setShortcutValue(MASShortcut(keyCode, shortcut_modifier::kCommand));
    EXPECT_TRUE(runUntil([&] { return note.isVisible() == (keyCode == 120); }));
  }
  window.shortcutView().setShortcutValue({});
  EXPECT_TRUE(runUntil([&] { return !note.isVisible(); })) << "nothing is recorded";
  binder.breakBindingWithDefaultsKey(kShortcutKey);
}

TEST_F(PreferencesTest, TheKeyboardGoesThroughEveryControlAndEachHasAName) {
  const auto tour = [&] {
    std::vector<std::string> names;
    const QWidget *first = QApplication::focusWidget();
    for (QWidget *here = nullptr; here != first && names.size() < 20;) {
      here = QApplication::focusWidget();
      names.push_back(here->objectName().toStdString());
      QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(here);
      EXPECT_TRUE(accessible && !accessible->text(QAccessible::Name).isEmpty()) << names.back();
      EXPECT_TRUE(after("Tab", [&] { return QApplication::focusWidget() != here; }));
      here = QApplication::focusWidget();
    }
    return names;
  };
  EXPECT_THAT(tour(),
              ElementsAre("shortcutView", "microphoneBox", "volumeSlider", "hotwordCheckBox", "languageBox",
                          "runAtLaunchCheckBox", "signOutButton", "qt_tabwidget_tabbar"));
  EXPECT_TRUE(after("alt+a", [&] { return part<QWidget>(window, "aboutView").isVisible(); }));
  EXPECT_THAT(tour(), testing::UnorderedElementsAre("qt_tabwidget_tabbar", "faqButton", "fanPageButton",
                                                    "twitterButton", "tessalyButton"));
}

TEST_F(PreferencesTest, ChoosesAmongTheMicrophonesThatAreThere) {
  tests::SoundServer server;
  server.plugMicrophone("other");
  auto &box = part<QComboBox>(window, "microphoneBox");
  const auto shows = [&](const auto &condition) {
    return runUntil([&] {
      box.clearFocus();
      box.setFocus(Qt::TabFocusReason);
      return condition();
    });
  };
  EXPECT_TRUE(shows([&] { return box.count() == 3; }));
  EXPECT_TRUE(after("End", [&] { return defaults.objectForKey(kInputDeviceKey).isValid(); }));
  const QString chosen = defaults.stringForKey(kInputDeviceKey);
  EXPECT_EQ(chosen, box.currentData().toString());

  server.unplugMicrophone("mic");
  server.unplugMicrophone("other");
  EXPECT_TRUE(shows([&] { return box.currentText().contains(QStringLiteral("not attached")); }));
  EXPECT_EQ(box.currentData().toString(), chosen);
  EXPECT_EQ(defaults.stringForKey(kInputDeviceKey), chosen) << "a microphone that goes is not given up";
  EXPECT_TRUE(after("Home", [&] { return !defaults.objectForKey(kInputDeviceKey).isValid(); }));
}

TEST_F(PreferencesTest, NoLanguageHasAMnemonicTwiceOrATextCutOff) {
  for (const bool german : {false, true}) {
    ASSERT_TRUE(!german || installTranslations(QLocale(QLocale::German, QLocale::Austria)));
    PreferencesWindowController translated(ApplicationInformation::ofThisBuild({}), defaults);
    translated.showWindow();
    const auto &note = part<QLabel>(translated, "hotwordNote");
    EXPECT_GE(note.height(), note.heightForWidth(note.width()));
    const auto &tabs = part<QTabWidget>(translated, "tabs");
    for (int page = 0; page < tabs.count(); ++page) {
      QStringList texts{tabs.tabText(0), tabs.tabText(1)};
      for (const auto *button : tabs.widget(page)->findChildren<QAbstractButton *>()) texts << button->text();
      for (const auto *label : tabs.widget(page)->findChildren<QLabel *>()) {
        if (label->buddy()) texts << label->text();
      }
      QStringList keys;
      for (const QString &text : texts) keys << QKeySequence::mnemonic(text).toString();
      EXPECT_FALSE(keys.contains(QString())) << keys.join(u' ').toStdString();
      EXPECT_EQ(keys.removeDuplicates(), 0) << texts.join(u' ').toStdString();
    }
  }
  qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator *>());
}

}  // namespace
}  // namespace velmora
