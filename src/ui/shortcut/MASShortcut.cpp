// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASShortcut.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QKeySequence>
#include <limits>

#include "platform/hotkeys/KeyCodes.h"
#include "platform/hotkeys/KeyboardLayout.h"

namespace velmora {

namespace {

using enum shortcut_modifier::Flag;

struct Modifier {
  std::uint32_t flag;
  std::uint32_t hotKeyFlag;
  char16_t glyph;
  Qt::KeyboardModifier ofEvents;
  std::uint32_t keyCodes[2];
};

// In the order in which they are shown.
constexpr Modifier kModifiers[] = {
    {kControl, hot_key_modifier::kControl, u'\u2303', Qt::ControlModifier, {59, 62}},
    {kOption, hot_key_modifier::kOption, u'\u2325', Qt::AltModifier, {58, 61}},
    {kShift, hot_key_modifier::kShift, u'\u21e7', Qt::ShiftModifier, {56, 60}},
    {kCommand, hot_key_modifier::kCommand, u'\u2318', Qt::MetaModifier, {55, 54}},
};

constexpr std::uint32_t kSpace = 49;

std::optional<std::uint32_t> number(const QJsonValue &value) {
  const double number = value.toDouble(-1);
  if (number < 0 || number > std::numeric_limits<std::uint32_t>::max()) return {};
  return static_cast<std::uint32_t>(number);
}

}  // namespace

MASShortcut MASShortcut::shortcutWithKeyCode(std::uint32_t keyCode, std::uint32_t modifierFlags) {
  return {keyCode, modifierFlags};
}

MASShortcut MASShortcut::shortcutWithEvent(const QKeyEvent &event) {
  const Key *key = keyOf(event);
  const std::uint32_t keyCode = key ? key->keyCode : kUnknownKeyCode;
  std::uint32_t flags = 0;
  for (const Modifier &modifier : kModifiers) {
    bool held = event.modifiers().testFlag(modifier.ofEvents);
    // The event of a modifier tells of the time before it.
    if (keyCode == modifier.keyCodes[0] || keyCode == modifier.keyCodes[1]) {
      held = event.type() != QEvent::KeyRelease;
    }
    if (held) flags |= modifier.flag;
  }
  return {keyCode, flags};
}

MASShortcut::MASShortcut(std::uint32_t keyCode, std::uint32_t modifierFlags)
    : m_keyCode(keyCode), m_modifierFlags(modifierFlags) {}

std::uint32_t MASShortcut::carbonFlags() const {
  std::uint32_t flags = 0;
  for (const Modifier &modifier : kModifiers) {
    if (m_modifierFlags & modifier.flag) flags |= modifier.hotKeyFlag;
  }
  return flags;
}

QString MASShortcut::keyCodeString() const {
  if (m_keyCode == kSpace) return QCoreApplication::translate("MASShortcut", "Space");
  const Key *key = keyWithCode(m_keyCode);
  return key ? KeyboardLayout::shared().text(*key) : QString();
}

QString MASShortcut::keyCodeStringForKeyEquivalent() const {
  const Key *key = keyWithCode(m_keyCode);
  if (!key || key->kind == Key::Kind::modifier) return {};
  if (key->kind == Key::Kind::special || key->keysym == keyWithCode(76)->keysym) {
    return QKeySequence(key->key).toString(QKeySequence::PortableText);
  }
  return KeyboardLayout::shared().text(*key).toLower();
}

QString MASShortcut::modifierFlagsString() const {
  QString text;
  for (const Modifier &modifier : kModifiers) {
    if (m_modifierFlags & modifier.flag) text += QChar(modifier.glyph);
  }
  return text;
}

QString MASShortcut::description() const { return modifierFlagsString() + keyCodeString(); }

QByteArray MASShortcut::archivedData() const {
  const QJsonObject archive{{QStringLiteral("$class"), QStringLiteral("MASShortcut")},
                            {QStringLiteral("KeyCode"), double(m_keyCode)},
                            {QStringLiteral("ModifierFlags"), double(m_modifierFlags)}};
  return QJsonDocument(archive).toJson(QJsonDocument::Compact);
}

std::optional<MASShortcut> MASShortcut::unarchived(const QByteArray &data) {
  const QJsonObject archive = QJsonDocument::fromJson(data).object();
  if (archive[QLatin1String("$class")].toString() != QLatin1String("MASShortcut")) return {};
  const auto keyCode = number(archive[QLatin1String("KeyCode")]);
  const auto modifierFlags = number(archive[QLatin1String("ModifierFlags")]);
  if (!keyCode || !modifierFlags) return {};
  return MASShortcut(*keyCode, *modifierFlags);
}

}  // namespace velmora
