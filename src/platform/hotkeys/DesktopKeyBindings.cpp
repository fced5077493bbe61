// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/DesktopKeyBindings.h"

#include <xkbcommon/xkbcommon.h>

#include <QKeySequence>
#include <algorithm>
#include <iterator>

#include "platform/hotkeys/KeyCodes.h"
#include "platform/hotkeys/KeyboardLayout.h"

namespace velmora {

namespace {

using enum hot_key_modifier::Flag;

struct Name {
  QLatin1String name;
  std::uint32_t modifier;
};
constexpr Name kGnomeModifiers[] = {
    {QLatin1String("primary"), kControl}, {QLatin1String("control"), kControl},
    {QLatin1String("ctrl"), kControl},    {QLatin1String("ctl"), kControl},
    {QLatin1String("alt"), kOption},      {QLatin1String("mod1"), kOption},
    {QLatin1String("shift"), kShift},     {QLatin1String("shft"), kShift},
    {QLatin1String("super"), kCommand},   {QLatin1String("meta"), kCommand},
    {QLatin1String("mod4"), kCommand},
};

constexpr const char *kGnomeSchemas[] = {
    "org.gnome.desktop.wm.keybindings",     "org.gnome.mutter.keybindings",
    "org.gnome.mutter.wayland.keybindings", "org.gnome.settings-daemon.plugins.media-keys",
    "org.gnome.shell.keybindings",
};

std::optional<SymbolicHotKey> hotKey(const Key *key, std::uint32_t modifiers) {
  if (!key || key->kind == Key::Kind::modifier) return {};
  return SymbolicHotKey{.keyCode = key->keyCode, .modifiers = modifiers, .enabled = true};
}

/// The first of the values that KDE writes in one line with commas between: the one in force.
QString kdeValue(const QString &line) {
  QString value;
  for (qsizetype i = 0; i < line.size() && line[i] != QLatin1Char(','); ++i) {
    if (line[i] == QLatin1Char('\\') && i + 1 < line.size()) {
      ++i;
      value += line[i] == QLatin1Char('t') ? QLatin1Char('\t') : line[i];
    } else {
      value += line[i];
    }
  }
  return value;
}

std::optional<SymbolicHotKey> kdeHotKey(const QString &text) {
  const QKeySequence sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
  if (sequence.count() != 1) return {};
  const QKeyCombination keys = sequence[0];
  std::uint32_t modifiers = 0;
  if (keys.keyboardModifiers().testFlag(Qt::MetaModifier)) modifiers |= kCommand;
  if (keys.keyboardModifiers().testFlag(Qt::ControlModifier)) modifiers |= kControl;
  if (keys.keyboardModifiers().testFlag(Qt::AltModifier)) modifiers |= kOption;
  if (keys.keyboardModifiers().testFlag(Qt::ShiftModifier)) modifiers |= kShift;
  // Up to there a key of the toolkit's is the character that it writes.
  if (keys.key() > Qt::Key_Space && keys.key() < Qt::Key_Escape) {
    return hotKey(
        KeyboardLayout::shared().keyWriting(xkb_utf32_to_keysym(QChar::toLower(char32_t(keys.key())))),
        modifiers);
  }
  return hotKey(keyWithQtKey(keys.key()), modifiers);
}

}  // namespace

std::optional<SymbolicHotKey> gnomeHotKey(const QString &accelerator) {
  std::uint32_t modifiers = 0;
  QString rest = accelerator;
  while (rest.startsWith(QLatin1Char('<'))) {
    const qsizetype end = rest.indexOf(QLatin1Char('>'));
    if (end < 0) return {};
    const QString name = rest.mid(1, end - 1).toLower();
    const auto *known = std::find_if(std::begin(kGnomeModifiers), std::end(kGnomeModifiers),
                                     [&](const Name &each) { return each.name == name; });
    if (known == std::end(kGnomeModifiers)) return {};
    modifiers |= known->modifier;
    rest.remove(0, end + 1);
  }
  if (rest == QLatin1String("Above_Tab")) return hotKey(keyWithKeysym(XKB_KEY_grave), modifiers);
  const xkb_keysym_t keysym = xkb_keysym_from_name(rest.toUtf8().constData(), XKB_KEYSYM_CASE_INSENSITIVE);
  return keysym == XKB_KEY_NoSymbol ? std::nullopt
                                    : hotKey(KeyboardLayout::shared().keyWriting(keysym), modifiers);
}

QStringList gnomeTexts(const QString &value) {
  QStringList texts;
  for (qsizetype i = 0; i < value.size(); ++i) {
    const QChar quote = value[i];
    if (quote != QLatin1Char('\'') && quote != QLatin1Char('"')) continue;
    QString text;
    for (++i; i < value.size() && value[i] != quote; ++i) {
      if (value[i] == QLatin1Char('\\') && i + 1 < value.size()) ++i;
      text += value[i];
    }
    texts << text;
  }
  return texts;
}

GnomeKeyBindings gnomeKeyBindings(const QByteArray &settings) {
  GnomeKeyBindings bindings;
  for (const QByteArray &line : settings.split('\n')) {
    const QString text = QString::fromUtf8(line);
    const QString schema = text.section(QLatin1Char(' '), 0, 0);
    const bool wanted = std::any_of(std::begin(kGnomeSchemas), std::end(kGnomeSchemas),
                                    [&](const char *each) { return schema == QLatin1String(each); });
    if (!wanted) continue;
    const QStringList values = gnomeTexts(text.section(QLatin1Char(' '), 2));
    if (text.section(QLatin1Char(' '), 1, 1) == QLatin1String("custom-keybindings")) {
      bindings.customBindings = values;
      continue;
    }
    for (const QString &value : values) {
      if (const auto found = gnomeHotKey(value)) bindings.hotKeys.push_back(*found);
    }
  }
  return bindings;
}

std::vector<SymbolicHotKey> kdeHotKeys(const QByteArray &file) {
  std::vector<SymbolicHotKey> hotKeys;
  for (const QByteArray &line : file.split('\n')) {
    const qsizetype equals = line.indexOf('=');
    if (equals < 0 || line.startsWith('[') || line.startsWith("_k_friendly_name")) continue;
    const QString value = kdeValue(QString::fromUtf8(line.mid(equals + 1)).trimmed());
    for (const QString &text : value.split(QLatin1Char('\t'))) {
      if (text == QLatin1String("none")) continue;
      if (const auto found = kdeHotKey(text)) hotKeys.push_back(*found);
    }
  }
  return hotKeys;
}

}  // namespace velmora
