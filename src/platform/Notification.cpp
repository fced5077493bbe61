// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/Notification.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QStringList>
#include <QVariantMap>

#include "foundation/Log.h"

namespace velmora {

void showNotification(const QString &title, const QString &body) {
  constexpr unsigned kReplacesNone = 0;
  constexpr int kUsualTime = -1;
  const QString service = QStringLiteral("org.freedesktop.Notifications");
  QDBusMessage call = QDBusMessage::createMethodCall(
      service, QStringLiteral("/org/freedesktop/Notifications"), service, QStringLiteral("Notify"));
  // The body may hold markup, which what others have written is not.
  call << QStringLiteral("Velmora") << kReplacesNone << QStringLiteral("velmora") << title
       << body.toHtmlEscaped() << QStringList()
       << QVariantMap{{QStringLiteral("desktop-entry"), QGuiApplication::desktopFileName()}} << kUsualTime;
  auto *const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(answer, &QDBusPendingCallWatcher::finished, answer, [answer] {
    answer->deleteLater();
    const QDBusPendingReply<uint> reply = *answer;
    if (reply.isError()) log("Notification error: ", reply.error().message().toStdString());
  });
}

}  // namespace velmora
