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
#include "platform/Workspace.h"
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

const DeploymentLinks kLinks{.forum = "https://forum.example/",
                             .fanPage = "https://fans.example/",
                             .microblog = "https://blog.example/",
                             .home = "https://home.example/"};
const ApplicationInformation kInformation = ApplicationInformation::ofThisBuild(kLinks);

const QString kShortcutKey = QStringLiteral("customShortcut");

struct PreferencesTest : testing::Test {
  PreferencesTest() { defaults.setObject(true, kLoggedInKey); }
  ~PreferencesTest() override {
    for (const auto key : {kRunAtLaunchEnableKey, kHotwordEnableKey, kInputDeviceKey, kLoggedInKey,
                           kAnswerVolumeKey, kLanguageKey})
      defaults.removeObjectForKey(key);
  }
  static bool shows(PreferencesWindowController &window) {
    window.showWindow();
    return runUntil([&] { return window.isActiveWindow(); });
  }
  static bool type(const char *key) { return tests::xdotool({"key", key}); }
  template <typename Widget>
  static Widget &part(const QWidget &window, const char *name) {
    return *window.findChild<Widget *>(QString::fromLatin1(name));
  }
  static std::string labelled(const QWidget &window, const char *name) {
    return part<QLabel>(window, name).text().toStdString();
  }

  UserDefaults &defaults = UserDefaults::standard();
  QString entry = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                  QStringLiteral("/autostart/com.brindlewick.GAHelperApp.desktop");
};

TEST_F(PreferencesTest, MnemonicsSwitchAndStoreAndEveryWindowShowsIt) {
  PreferencesWindowController other(kInformation, defaults);
  other.showWindow();
  other.close();
  PreferencesWindowController window(kInformation, defaults);
  ASSERT_TRUE(shows(window));
  const std::tuple<const char *, const char *, QLatin1String> boxes[] = {
      {"alt+l", "hotwordCheckBox", kHotwordEnableKey},
      {"alt+r", "runAtLaunchCheckBox", kRunAtLaunchEnableKey}};
  for (const auto &[keys, name, setting] : boxes) {
    EXPECT_FALSE(part<QCheckBox>(window, name).isChecked()) << "never stored";
    EXPECT_FALSE(defaults.objectForKey(setting).isValid());
    for (const bool on : {true, false, true}) {
      EXPECT_TRUE(type(keys));
      EXPECT_TRUE(runUntil([&] { return defaults.objectForKey(setting) == QVariant(on); })) << name;
      EXPECT_EQ(part<QCheckBox>(other, name).isChecked(), on) << name;
      if (setting == kRunAtLaunchEnableKey) {
        EXPECT_EQ(QFile::exists(entry), on);
      }
    }
  }
  // Volume by the keyboard, the language by the list.
  EXPECT_TRUE(type("alt+v"));
  EXPECT_TRUE(type("Left"));
  EXPECT_TRUE(runUntil([&] { return defaults.objectForKey(kAnswerVolumeKey).toInt() == 90; }));
  EXPECT_EQ(part<QSlider>(other, "volumeSlider").value(), 90);
  EXPECT_TRUE(type("alt+n"));
  for (const auto &[key, code] : {std::pair("Down", "en"), std::pair("Down", "de"), std::pair("Home", "")}) {
    EXPECT_TRUE(type(key));
    EXPECT_TRUE(runUntil([&] { return defaults.stringForKey(kLanguageKey) == QLatin1String(code); })) << code;
    EXPECT_EQ(part<QComboBox>(other, "languageBox").currentData().toString(), QLatin1String(code));
  }
  EXPECT_EQ(labelled(window, "accountState"), "You are signed in.");
  EXPECT_TRUE(type("alt+o"));
  EXPECT_TRUE(runUntil([&] { return defaults.objectForKey(kLoggedInKey) == QVariant(false); }));
  EXPECT_EQ(labelled(other, "accountState"), "You are not signed in.");
  EXPECT_FALSE(part<QPushButton>(other, "signOutButton").isEnabled());
}

TEST_F(PreferencesTest, EscapeEndsTheRecordingBeforeTheWindow) {
  PreferencesWindowController window(kInformation, defaults);
  ASSERT_TRUE(shows(window));
  MASShortcutView &recorder = window.shortcutView();
  EXPECT_TRUE(type("alt+m"));
  EXPECT_TRUE(runUntil([&] { return !recorder.hasFocus(); }));
  EXPECT_TRUE(type("alt+s"));
  EXPECT_TRUE(runUntil([&] { return recorder.hasFocus(); }));
  for (const char *keys : {"Escape", "super+shift+b"}) {
    EXPECT_TRUE(type("space"));
    EXPECT_TRUE(runUntil([&] { return recorder.isRecording(); }));
    EXPECT_TRUE(type(keys));
    EXPECT_TRUE(runUntil([&] { return !recorder.isRecording(); }));
    EXPECT_TRUE(window.isVisible());
  }
  EXPECT_FALSE(defaults.objectForKey(kShortcutKey).isNull());
  EXPECT_TRUE(type("Escape"));
  EXPECT_TRUE(runUntil([&] { return !window.isVisible(); }));
}

TEST_F(PreferencesTest, SaysOfTheShortcutThatAnotherProgramHoldsIt) {
  const auto record = [&](std::uint32_t keyCode) {
    defaults.setObject(MASShortcut(keyCode, shortcut_modifier::kCommand).archivedData(), kShortcutKey);
  };
  constexpr std::uint32_t kF1 = 122;
  constexpr std::uint32_t kF2 = 120;
  tests::OtherProgram holder;
  holder.grab(68, 64, false);  // the position of F2, with Super
  record(kF2);
  MASShortcutBinder &binder = MASShortcutBinder::sharedBinder();
  binder.bindShortcutWithDefaultsKey(kShortcutKey, [] {});
  {
    PreferencesWindowController window(kInformation, defaults);
    ASSERT_TRUE(shows(window));
    const auto &note = part<QLabel>(window, "shortcutNote");
    EXPECT_TRUE(note.isVisible());
    record(kF1);
    EXPECT_TRUE(runUntil([&] { return !note.isVisible(); }));
    record(kF2);
    EXPECT_TRUE(runUntil([&] { return note.isVisible(); }));
    defaults.removeObjectForKey(kShortcutKey);
    EXPECT_TRUE(runUntil([&] { return !note.isVisible(); })) << "nothing is recorded";
  }
  binder.breakBindingWithDefaultsKey(kShortcutKey);
}

TEST_F(PreferencesTest, TheKeyboardGoesThroughEveryControlAndEachHasAName) {
  PreferencesWindowController window(kInformation, defaults);
  ASSERT_TRUE(shows(window));
  const auto tour = [&] {
    std::vector<std::string> names;
    const QWidget *first = QApplication::focusWidget();
    for (const QWidget *focus = first; names.empty() || focus != first;) {
      QWidget *here = QApplication::focusWidget();
      names.push_back(here->objectName().toStdString());
      QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(here);
      EXPECT_TRUE(accessible && !accessible->text(QAccessible::Name).isEmpty()) << names.back();
      EXPECT_TRUE(type("Tab"));
      EXPECT_TRUE(runUntil([&] { return QApplication::focusWidget() != here; }));
      focus = QApplication::focusWidget();
      if (names.size() > 20) break;
    }
    return names;
  };
  EXPECT_THAT(tour(),
              ElementsAre("shortcutView", "microphoneBox", "volumeSlider", "hotwordCheckBox", "languageBox",
                          "runAtLaunchCheckBox", "signOutButton", "qt_tabwidget_tabbar"));
  EXPECT_TRUE(type("alt+a"));
  EXPECT_TRUE(runUntil([&] { return part<QWidget>(window, "aboutView").isVisible(); }));
  EXPECT_FALSE(part<QWidget>(window, "generalVIew").isVisible());
  EXPECT_THAT(tour(), testing::UnorderedElementsAre("qt_tabwidget_tabbar", "faqButton", "fanPageButton",
                                                    "twitterButton", "tessalyButton"));
}

TEST_F(PreferencesTest, OpensTheLinksThatThereAreAndHidesTheOthers) {
  std::vector<std::string> opened;
  setUrlOpener([&](const QUrl &url) {
    opened.push_back(url.toString().toStdString());
    return true;
  });
  PreferencesWindowController window(kInformation, defaults);
  ASSERT_TRUE(shows(window));
  window.AboutTabClick();
  ASSERT_TRUE(
      runUntil([&] { return part<QWidget>(window, "faqButton").isVisible() && window.isActiveWindow(); }));
  for (const char *keys : {"alt+s", "alt+f", "alt+i", "alt+h"}) {
    const std::size_t before = opened.size();
    EXPECT_TRUE(type(keys));
    EXPECT_TRUE(runUntil([&] { return opened.size() > before; })) << keys;
  }
  setUrlOpener({});
  EXPECT_THAT(opened, ElementsAre("https://forum.example/", "https://fans.example/", "https://blog.example/",
                                  "https://home.example/"));

  PreferencesWindowController other(ApplicationInformation::ofThisBuild({.home = kLinks.home}), defaults);
  other.showWindow();
  other.AboutTabClick();
  for (const char *name : {"faqButton", "fanPageButton", "twitterButton", "tessalyButton"})
    EXPECT_EQ(part<QPushButton>(other, name).isVisible(), name == std::string("tessalyButton")) << name;
  EXPECT_EQ(labelled(other, "appVersion"), VELMORA_VERSION);
}

TEST_F(PreferencesTest, ChoosesAmongTheMicrophonesThatAreThere) {
  tests::SoundServer server;
  server.plugMicrophone("other");
  PreferencesWindowController window(kInformation, defaults);
  ASSERT_TRUE(shows(window));
  auto &box = part<QComboBox>(window, "microphoneBox");
  EXPECT_TRUE(runUntil([&] {
    box.setFocus(Qt::TabFocusReason);
    box.clearFocus();
    return box.count() == 3;
  }));
  box.setFocus();
  EXPECT_TRUE(type("End"));
  EXPECT_TRUE(runUntil([&] { return defaults.objectForKey(kInputDeviceKey).isValid(); }));
  const QString chosen = defaults.stringForKey(kInputDeviceKey);
  EXPECT_EQ(chosen, box.currentData().toString());

  server.unplugMicrophone("mic");
  server.unplugMicrophone("other");
  EXPECT_TRUE(runUntil([&] {
    box.clearFocus();
    box.setFocus(Qt::TabFocusReason);
    return box.currentText().contains(QStringLiteral("not attached"));
  }));
  EXPECT_EQ(box.currentData().toString(), chosen);
  EXPECT_EQ(defaults.stringForKey(kInputDeviceKey), chosen) << "a microphone that goes is not given up";
  EXPECT_TRUE(type("Home"));
  EXPECT_TRUE(runUntil([&] { return !defaults.objectForKey(kInputDeviceKey).isValid(); }));
}

TEST_F(PreferencesTest, NoLanguageHasAMnemonicTwiceOrATextCutOff) {
  for (const bool german : {false, true}) {
    ASSERT_TRUE(!german || installTranslations(QLocale(QLocale::German, QLocale::Austria)));
    PreferencesWindowController window(kInformation, defaults);
    window.showWindow();
    EXPECT_EQ(window.windowTitle().toStdString(),
              german ? "Einstellungen von Velmora" : "Velmora Preferences");
    const auto &note = part<QLabel>(window, "hotwordNote");
    EXPECT_GE(note.height(), note.heightForWidth(note.width()));
    const auto &tabs = part<QTabWidget>(window, "tabs");
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
  for (QTranslator *translator : QCoreApplication::instance()->findChildren<QTranslator *>())
    delete translator;
}

}  // namespace
}  // namespace velmora
