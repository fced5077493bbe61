// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/ScreenReader.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QList>
#include <stdexcept>

#include "support/Waiting.h"

namespace velmora::tests {
namespace {

const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kRoot = QStringLiteral("/org/a11y/atspi/accessible/root");
// Bits of the state of an element.
constexpr unsigned kFocused = 12;
constexpr unsigned kShowing = 25;
constexpr int kDeepest = 40;
constexpr int kLimit = 2000;  // ms for one answer
constexpr std::chrono::milliseconds kPause{30};

QDBusConnection accessibilityBus() {
  const QDBusConnection session = QDBusConnection::sessionBus();
  const QDBusMessage ask =
      QDBusMessage::createMethodCall(QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                     QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
  const QDBusMessage answer = session.call(ask);
  if (answer.type() != QDBusMessage::ReplyMessage)
    throw std::runtime_error("no accessibility: " + answer.errorMessage().toStdString());
  return QDBusConnection::connectToBus(answer.arguments().constFirst().toString(),
                                       QStringLiteral("velmora-tests"));
}

}  // namespace

ScreenReader::ScreenReader() : m_bus(accessibilityBus()) {
  if (!m_bus.isConnected()) throw std::runtime_error("no accessibility bus");
}

std::vector<ScreenReader::Element> ScreenReader::elements() const {
  std::vector<Element> all;
  read(QStringLiteral("org.a11y.atspi.Registry"), kRoot, all, 0);
  return all;
}

void ScreenReader::read(const QString &service, const QString &path, std::vector<Element> &all,
                        int depth) const {
  const auto call = [&](const QString &interface, const QString &method, const QVariantList &arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage answer = m_bus.call(message, QDBus::Block, kLimit);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments() : QVariantList();
  };
  if (depth > 1) {
    const QVariantList states = call(kAccessible, QStringLiteral("GetState"), {});
    if (states.isEmpty()) return;  // it has gone
    QList<uint> bits;
    states.constFirst().value<QDBusArgument>() >> bits;
    if (bits.isEmpty() || (bits.constFirst() >> kShowing & 1U) == 0) return;
    const QVariantList role = call(kAccessible, QStringLiteral("GetRoleName"), {});
    const QVariantList name = call(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                                   {kAccessible, QStringLiteral("Name")});
    if (role.isEmpty() || name.isEmpty()) return;
    all.push_back({.service = service,
                   .path = path,
                   .role = role.constFirst().toString().toStdString(),
                   .name = name.constFirst().value<QDBusVariant>().variant().toString().toStdString(),
                   .isFocused = (bits.constFirst() >> kFocused & 1U) != 0});
  }
  if (depth > kDeepest) return;
  const QVariantList answer = call(kAccessible, QStringLiteral("GetChildren"), {});
  if (answer.isEmpty()) return;
  std::vector<std::pair<QString, QString>> children;
  const auto list = answer.constFirst().value<QDBusArgument>();
  list.beginArray();
  while (!list.atEnd()) {
    QString childService;
    QDBusObjectPath childPath;
    list.beginStructure();
    list >> childService >> childPath;
    list.endStructure();
    children.emplace_back(childService, childPath.path());
  }
  list.endArray();
  for (const auto &[childService, childPath] : children) read(childService, childPath, all, depth + 1);
}

std::optional<ScreenReader::Element> ScreenReader::find(const std::string &role,
                                                        const std::string &name) const {
  // Reading keeps the program busy that is read: not without a pause.
  std::this_thread::sleep_for(kPause);
  std::optional<Element> found;
  for (Element &element : elements())
    if (!found && (role.empty() || element.role == role) && element.name == name) found = std::move(element);
  return found;
}

std::optional<ScreenReader::Element> ScreenReader::waitFor(const std::string &role,
                                                           const std::string &name) const {
  std::optional<Element> found;
  (void)eventually([&] { return (found = find(role, name)).has_value(); });
  return found;
}

bool ScreenReader::waitForEndOf(const std::string &role, const std::string &name) const {
  return eventually([&] { return !find(role, name); });
}

bool ScreenReader::press(const std::string &role, const std::string &name) const {
  const auto element = waitFor(role, name);
  if (!element) return false;
  QDBusMessage message = QDBusMessage::createMethodCall(
      element->service, element->path, QStringLiteral("org.a11y.atspi.Action"), QStringLiteral("DoAction"));
  message << 0;
  const QVariantList answer = m_bus.call(message, QDBus::Block, kLimit).arguments();
  return !answer.isEmpty() && answer.constFirst().toBool();
}

std::string ScreenReader::text() const {
  std::string all;
  for (const Element &element : elements())
    all += element.role + " \"" + element.name + "\"" + (element.isFocused ? " (focus)" : "") + '\n';
  return all;
}

}  // namespace velmora::tests
