// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QKeyEvent>

#include "foundation/UserDefaults.h"
#include "ui/shortcut/MASDictionaryTransformer.h"
#include "ui/shortcut/MASShortcut.h"

namespace velmora {
namespace {

using enum shortcut_modifier::Flag;

TEST(Shortcut, IsMadeOfAnEvent) {
  struct Case {
    QEvent::Type type;
    int key;
    Qt::KeyboardModifiers modifiers;
    quint32 scanCode, keysym;
    MASShortcut shortcut;
  };
  const Case cases[] = {
      // The first key of the middle row on a French keyboard writes Q and is A by its place.
      {QEvent::KeyPress, Qt::Key_Q, Qt::MetaModifier, 38, 'q', {0, kCommand}},
      // Caps Lock that has become Escape is one; a keypad's figure is one without Num Lock too.
      {QEvent::KeyPress, Qt::Key_Escape, {}, 66, 0xff1b, {53, 0}},
      {QEvent::KeyPress, Qt::Key_Home, Qt::KeypadModifier, 79, 0xff95, {89, 0}},
      {QEvent::KeyPress, Qt::Key_Backtab, Qt::ShiftModifier, 23, 0xfe20, {48, kShift}},
      // From a platform that tells neither place nor keysym.
      {QEvent::KeyPress, Qt::Key_F1, Qt::ControlModifier | Qt::AltModifier, 0, 0, {122, kControl | kOption}},
      {QEvent::KeyPress, Qt::Key_MediaPlay, {}, 172, 0x1008ff14, {0xffff, 0}},
      // Modifiers count from their own press to their own release.
      {QEvent::KeyPress, Qt::Key_Shift, Qt::MetaModifier, 50, 0xffe1, {56, kShift | kCommand}},
      {QEvent::KeyRelease, Qt::Key_Shift, Qt::MetaModifier | Qt::ShiftModifier, 50, 0xffe1, {56, kCommand}},
  };
  for (const Case &each : cases) {
    const QKeyEvent event(each.type, each.key, each.modifiers, each.scanCode, each.keysym, 0);
    const auto made = MASShortcut::shortcutWithEvent(event);
    EXPECT_EQ(made.keyCode(), each.shortcut.keyCode()) << each.key;
    EXPECT_EQ(made.modifierFlags(), each.shortcut.modifierFlags()) << each.key;
  }
}

TEST(DictionaryTransformer, ReadsWhatIsStored) {
  const MASDictionaryTransformer transformer;
  const auto read = [&](const QVariant &value) { return shortcutOf(transformer.transformedValue(value)); };
  EXPECT_EQ(read(MASShortcut(122, kCommand).archivedData()), MASShortcut(122, kCommand));
  // By way of a store, which has fewer types than a variant.
  UserDefaults defaults;
  const QString key = QStringLiteral("customShortcut");
  defaults.setObject(transformer.reverseTransformedValue(variantOf(MASShortcut(0, kAll))), key);
  EXPECT_EQ(defaults.dictionaryForKey(key).value(QStringLiteral("modifierFlags")).toULongLong(), kAll);
  EXPECT_EQ(read(defaults.objectForKey(key)), MASShortcut(0, kAll));
  const QVariant damaged[] = {
      true,
      QStringLiteral("F1"),
      QByteArray("bplist00"),
      QByteArray(R"({"KeyCode":122,"ModifierFlags":0})"),
      QByteArray(R"({"$class":"MASShortcut","KeyCode":-1,"ModifierFlags":0})"),
      QByteArray(R"({"$class":"MASShortcut","KeyCode":1,"ModifierFlags":1e99})"),
      QVariantMap{{QStringLiteral("keyCode"), 122}},
      QVariantMap{{QStringLiteral("keyCode"), -122}, {QStringLiteral("modifierFlags"), 0}},
      QVariantMap{{QStringLiteral("keyCode"), QVariantMap()}, {QStringLiteral("modifierFlags"), 0}},
  };
  for (const QVariant &value : damaged) EXPECT_EQ(read(value), std::nullopt);
}

}  // namespace
}  // namespace velmora
