// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/BusInstance.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace velmora {
namespace {

const QString kName = QStringLiteral("com.brindlewick.Velmora");
const QString kPath = QStringLiteral("/com/brindlewick/Velmora");
const QString kInterface = QStringLiteral("org.freedesktop.Application");
constexpr int kPatience = 2000;  // ms

QDBusMessage callOfBus(const QString &method) {
  const QString bus = QStringLiteral("org.freedesktop.DBus");
  return QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus, method);
}

}  // namespace

std::unique_ptr<SingleInstance> BusInstance::claim(const Handler &handler, bool &isTaken) {
  constexpr unsigned kDoNotQueue = 4;
  constexpr unsigned kIsOwner = 1;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return nullptr;
  // The object comes first: whoever sees the name may call it.
  std::unique_ptr<BusInstance> instance(new BusInstance(handler));
  if (!bus.registerObject(kPath, instance.get(), QDBusConnection::ExportAllSlots)) {
    isTaken = true;  // within this process
    return nullptr;
  }
  const QDBusMessage reply =
      bus.call(callOfBus(QStringLiteral("RequestName")) << kName << kDoNotQueue, QDBus::Block, kPatience);
  if (reply.type() != QDBusMessage::ReplyMessage) return nullptr;
  isTaken = reply.arguments().value(0).toUInt() != kIsOwner;
  if (isTaken) return nullptr;
  return instance;
}

BusInstance::~BusInstance() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (bus.objectRegisteredAt(kPath) != this) return;
  bus.unregisterObject(kPath);
  bus.send(callOfBus(QStringLiteral("ReleaseName")) << kName);
}

std::optional<bool> BusInstance::send(const QString &command) {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::nullopt;
  const bool isAction = !command.isEmpty();
  QDBusMessage call = QDBusMessage::createMethodCall(
      kName, kPath, kInterface, isAction ? QStringLiteral("ActivateAction") : QStringLiteral("Activate"));
  call.setAutoStartService(false);
  if (isAction) call << command << QVariant::fromValue(QVariantList());
  call << QVariantMap();
  return bus.call(call, QDBus::Block, kPatience).type() == QDBusMessage::ReplyMessage;
}

void BusInstance::Activate(const QVariantMap &) { obey({}); }

void BusInstance::Open(const QStringList &, const QVariantMap &) { obey({}); }

void BusInstance::ActivateAction(const QString &name, const QVariantList &, const QVariantMap &) {
  obey(name);
}

}  // namespace velmora
