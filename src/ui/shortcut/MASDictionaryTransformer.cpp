// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/shortcut/MASDictionaryTransformer.h"

#include <QVariantMap>
#include <limits>

namespace velmora {

namespace {

std::optional<std::uint32_t> number(const QVariant &value) {
  bool isNumber = false;
  const qlonglong number = value.toLongLong(&isNumber);
  if (!isNumber || number < 0 || number > std::numeric_limits<std::uint32_t>::max()) return {};
  return static_cast<std::uint32_t>(number);
}

}  // namespace

QVariant MASDictionaryTransformer::transformedValue(const QVariant &value) const {
  if (value.typeId() == QMetaType::QByteArray) return variantOf(MASShortcut::unarchived(value.toByteArray()));
  if (value.typeId() != QMetaType::QVariantMap) return {};
  const QVariantMap dictionary = value.toMap();
  const auto keyCode = number(dictionary.value(QStringLiteral("keyCode")));
  const auto modifierFlags = number(dictionary.value(QStringLiteral("modifierFlags")));
  if (!keyCode || !modifierFlags) return {};
  return variantOf(MASShortcut(*keyCode, *modifierFlags));
}

QVariant MASDictionaryTransformer::reverseTransformedValue(const QVariant &value) const {
  const auto shortcut = shortcutOf(value);
  if (!shortcut) return QVariantMap();
  return QVariantMap{{QStringLiteral("keyCode"), qlonglong{shortcut->keyCode()}},
                     {QStringLiteral("modifierFlags"), qlonglong{shortcut->modifierFlags()}}};
}

std::optional<MASShortcut> shortcutOf(const QVariant &value) {
  return value.value<std::optional<MASShortcut>>();
}

QVariant variantOf(const std::optional<MASShortcut> &shortcut) {
  return shortcut ? QVariant::fromValue(shortcut) : QVariant();
}

}  // namespace velmora
