// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/NotifierHost.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace velmora {
namespace {

// Whom status items register with, and who hands them on to the hosts that show them.
const QString kWatcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString kPath = QStringLiteral("/StatusNotifierWatcher");

}  // namespace

NotifierHost::NotifierHost(const QDBusConnection &bus) : m_bus(bus) {
  auto *const owner =
      new QDBusServiceWatcher(kWatcher, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
  connect(owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString &, const QString &, const QString &newOwner) {
            // Whoever registered with the former one is unknown to the new one.
            ++m_questions;
            set(newOwner.isEmpty(), false);
            if (!newOwner.isEmpty()) ask();
          });
  for (const char *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
    m_bus.connect(kWatcher, kPath, kWatcher, QString::fromLatin1(signal), this, SLOT(ask()));
  ask();
}

void NotifierHost::ask() {
  QDBusMessage question = QDBusMessage::createMethodCall(
      kWatcher, kPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
  question << kWatcher << QStringLiteral("IsStatusNotifierHostRegistered");
  question.setAutoStartService(false);
  auto *const answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, number = ++m_questions] {
    answer->deleteLater();
    if (number != m_questions) return;
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    switch (reply.error().type()) {
      case QDBusError::NoError: return set(true, reply.value().variant().toBool());
      // There and silent: whatever the toolkit asked of it would wait.
      case QDBusError::NoReply:
      case QDBusError::TimedOut:
      case QDBusError::Timeout: return ask();
      default: return set(true, false);
    }
  });
}

void NotifierHost::set(bool isKnown, bool isThere) {
  if (isKnown == m_isKnown && isThere == m_isThere) return;
  m_isKnown = isKnown;
  m_isThere = isThere;
  Q_EMIT changed();
}

}  // namespace velmora
