// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/ColorScheme.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace velmora {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");

}  // namespace

ColorScheme::ColorScheme(const QDBusConnection &bus) : m_bus(bus) {
  m_bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
  QDBusMessage question = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
  question << kGroup << kKey;
  auto *const answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    answer->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    if (!reply.isError()) take(reply.value().variant());
  });
}

void ColorScheme::settingChanged(const QString &group, const QString &key, const QDBusVariant &value) {
  if (group == kGroup && key == kKey) take(value.variant());
}

void ColorScheme::take(const QVariant &value) {
  constexpr unsigned kDark = 1, kLight = 2;
  QVariant number = value;
  // `Read` answers with a variant in a variant.
  while (number.canConvert<QDBusVariant>()) number = number.value<QDBusVariant>().variant();
  const unsigned scheme = number.toUInt();
  const std::optional<bool> isDark = scheme == kDark    ? std::optional(true)
                                     : scheme == kLight ? std::optional(false)
                                                        : std::nullopt;
  if (isDark == m_isDark) return;
  m_isDark = isDark;
  Q_EMIT changed();
}

}  // namespace velmora
