// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/AAShortCut.h"

#include <gtest/gtest.h>

#include <optional>

#include "foundation/NotificationCenter.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "ui/shortcut/MASShortcutMonitor.h"
#include "ui/shortcut/MASShortcutView.h"

namespace velmora {
namespace {

using tests::runUntil;
using tests::xdotool;

TEST(AssistantShortcut, PostsOncePerPressWhateverTheSettingsSay) {
  MASShortcutView view;
  MASShortcutView otherView;
  view.resize(view.sizeHint());
  std::optional<AAShortCut> first(view);
  const AAShortCut second(otherView);
  UserDefaults &defaults = UserDefaults::standard();
  EXPECT_EQ(view.title().toStdString(), "⌘F1");

  int posts = 0;
  const auto watch = NotificationCenter::defaultCenter().addObserver(QStringLiteral("ShortCutPress"),
                                                                     [&](const Notification &) { ++posts; });
  tests::OtherProgram other;
  ASSERT_TRUE(runUntil([&] { return other.hasFocus(); }));

  struct Step {
    const char *what;
    std::function<void()> change;
    std::vector<const char *> posting, silent;
  };
  const auto set = [&](const char *key, bool value) {
    return [&defaults, key, value] { defaults.setObject(value, QString::fromLatin1(key)); };
  };
  // Recorded by real keys, over a window of our own that has the focus meanwhile.
  const auto record = [&] {
    view.show();
    view.activateWindow();
    ASSERT_TRUE(runUntil([&] { return view.isActiveWindow(); }));
    view.setRecording(true);
    ASSERT_TRUE(xdotool({"key", "super+shift+b"}));
    ASSERT_TRUE(runUntil([&] { return !view.isRecording(); }));
    view.hide();
    ASSERT_TRUE(runUntil([&] { return other.hasFocus(); }));
  };
  const Step steps[] = {
      {"first run", [] {}, {"super+F1", "super+F2"}, {"super+F3"}},
      {"fixed off", set("hardcodedShortcutEnabled", false), {"super+F1"}, {"super+F2"}},
      {"fixed on", set("hardcodedShortcutEnabled", true), {"super+F1", "super+F2"}, {}},
      {"recorded", record, {"super+shift+b", "super+F2"}, {"super+F1"}},
      {"custom off", set("customShortcutEnabled", false), {"super+F2"}, {"super+shift+b"}},
      {"custom on", set("customShortcutEnabled", true), {"super+F2", "super+shift+b"}, {"super+F1"}},
      {"one of them gone", [&] { first.reset(); }, {"super+F2", "super+shift+b"}, {}},
  };
  for (const Step &step : steps) {
    SCOPED_TRACE(step.what);
    step.change();
    const int before = posts;
    const int presses = other.presses();
    for (const char *keys : step.silent) ASSERT_TRUE(xdotool({"key", keys}));
    // What is nobody's comes to the program in front: the modifiers and the key.
    EXPECT_TRUE(runUntil([&] { return other.presses() >= presses + 2 * int(step.silent.size()); }));
    for (const char *keys : step.posting) ASSERT_TRUE(xdotool({"key", keys}));
    EXPECT_TRUE(runUntil([&] { return posts >= before + int(step.posting.size()); }));
    EXPECT_EQ(posts, before + int(step.posting.size()));
    EXPECT_EQ(otherView.isEnabled(), defaults.boolForKey(QStringLiteral("customShortcutEnabled")));
  }
  EXPECT_EQ(otherView.title().toStdString(), "⇧⌘B");
  MASShortcutMonitor::sharedMonitor().unregisterAllShortcuts();
}

}  // namespace
}  // namespace velmora
