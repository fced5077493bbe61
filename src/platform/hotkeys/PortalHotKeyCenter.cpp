// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/PortalHotKeyCenter.h"

#include <xkbcommon/xkbcommon.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <array>

#include "foundation/Log.h"
#include "platform/hotkeys/KeyCodes.h"

namespace velmora {

/// One of the shortcuts of a session, as the portal takes them.
struct PortalShortcut {
  QString id;
  QVariantMap properties;
};

static QDBusArgument &operator<<(QDBusArgument &argument, const PortalShortcut &shortcut) {
  argument.beginStructure();
  argument << shortcut.id << shortcut.properties;
  argument.endStructure();
  return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, PortalShortcut &shortcut) {
  argument.beginStructure();
  argument >> shortcut.id >> shortcut.properties;
  argument.endStructure();
  return argument;
}

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");
const QString kSession = QStringLiteral("org.freedesktop.portal.Session");

/// The combination as the portal writes it, such as LOGO+F1. Also the id of the shortcut, under which the
/// desktop remembers what the user makes of it.
QString triggerOf(const Key &key, std::uint32_t modifiers) {
  using enum hot_key_modifier::Flag;
  QString text;
  if (modifiers & kControl) text += QLatin1String("CTRL+");
  if (modifiers & kOption) text += QLatin1String("ALT+");
  if (modifiers & kShift) text += QLatin1String("SHIFT+");
  if (modifiers & kCommand) text += QLatin1String("LOGO+");
  std::array<char, 64> name{};
  xkb_keysym_get_name(key.keysym, name.data(), name.size());
  return text + QString::fromLatin1(name.data());
}

}  // namespace

PortalHotKeyCenter::PortalHotKeyCenter(const QDBusConnection &bus) : m_bus(bus) {
  qDBusRegisterMetaType<PortalShortcut>();
  m_bus.connect(kService, kPath, kInterface, QStringLiteral("Activated"), this,
                SLOT(activated(QDBusMessage)));
  m_bus.connect(kService, {}, kSession, QStringLiteral("Closed"), this, SLOT(closed(QDBusMessage)));
  // A portal that was started anew knows nothing of our session.
  auto *const watcher =
      new QDBusServiceWatcher(kService, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
    m_session.clear();
    m_failed = false;
    if (!m_triggers.empty()) changeSoon();
  });
}

PortalHotKeyCenter::~PortalHotKeyCenter() { closeSession(); }

std::optional<std::string> PortalHotKeyCenter::registerHotKey(std::uint32_t id, std::uint32_t keyCode,
                                                              std::uint32_t modifiers) {
  const Key *key = keyWithCode(keyCode);
  if (!key) return "there is no such key";
  if (!m_bus.isConnected()) return "there is no session bus";
  m_triggers[id] = triggerOf(*key, modifiers);
  m_failed = false;  // who asks anew may have changed their mind
  changeSoon();
  return {};
}

void PortalHotKeyCenter::unregisterHotKey(std::uint32_t id) {
  if (m_triggers.erase(id) > 0) changeSoon();
}

void PortalHotKeyCenter::unregisterAll() {
  m_triggers.clear();
  m_answers.clear();
  closeSession();
}

bool PortalHotKeyCenter::isHeldByAnother(std::uint32_t, std::uint32_t) { return false; }

void PortalHotKeyCenter::changeSoon() {
  // Changes come in groups.
  if (m_changing || m_failed) return;
  m_changing = true;
  MainQueue::main().async(m_alive, [this] {
    m_changing = false;
    m_answers.clear();  // of a session that nobody wants any more
    closeSession();
    if (!m_triggers.empty()) openSession();
  });
}

void PortalHotKeyCenter::openSession() {
  const QVariantMap options{
      {QStringLiteral("session_handle_token"), QStringLiteral("velmora%1").arg(++m_tokens)}};
  ask(QStringLiteral("CreateSession"), {}, options, [this](const QVariantMap &results) {
    m_session = results.value(QStringLiteral("session_handle")).toString();
    if (m_session.isEmpty()) return fail(QStringLiteral("it names no session"));
    bindShortcuts();
  });
}

void PortalHotKeyCenter::closeSession() {
  if (m_session.isEmpty()) return;
  m_bus.send(QDBusMessage::createMethodCall(kService, m_session, kSession, QStringLiteral("Close")));
  m_session.clear();
}

void PortalHotKeyCenter::bindShortcuts() {
  // Written out here: a list of our own type would go to the thread of the bus and be destroyed there.
  QDBusArgument shortcuts;
  shortcuts.beginArray(QMetaType::fromType<PortalShortcut>());
  for (const auto &[id, trigger] : m_triggers) {
    shortcuts << PortalShortcut{
        trigger,
        {{QStringLiteral("description"),
          QCoreApplication::translate("PortalHotKeyCenter", "Open Velmora (%1)").arg(trigger)},
         {QStringLiteral("preferred_trigger"), trigger}}};
  }
  shortcuts.endArray();
  ask(QStringLiteral("BindShortcuts"),
      {QVariant::fromValue(QDBusObjectPath(m_session)), QVariant::fromValue(shortcuts), QString()}, {},
      [](const QVariantMap &) {});
}

void PortalHotKeyCenter::ask(const QString &method, QVariantList arguments, QVariantMap options,
                             Answer answer) {
  // The answer comes as a signal of an object whose path follows from the token, and may be there first.
  const QString token = QStringLiteral("velmora%1").arg(++m_tokens);
  const QString sender = m_bus.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
  const QString path = kPath + QStringLiteral("/request/%1/%2").arg(sender, token);
  m_answers[path] = std::move(answer);
  m_bus.connect(kService, path, kRequest, QStringLiteral("Response"), this, SLOT(responded(QDBusMessage)));

  options.insert(QStringLiteral("handle_token"), token);
  arguments << options;
  QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, method);
  call.setArguments(arguments);
  auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, path] {
    watcher->deleteLater();
    if (!watcher->isError() || m_answers.erase(path) == 0) return;
    fail(watcher->error().message());
  });
}

void PortalHotKeyCenter::responded(const QDBusMessage &response) {
  m_bus.disconnect(kService, response.path(), kRequest, QStringLiteral("Response"), this,
                   SLOT(responded(QDBusMessage)));
  const auto found = m_answers.find(response.path());
  const QVariantList arguments = response.arguments();
  if (found == m_answers.end() || arguments.size() != 2) {
    // The session of a request that was given up is none of ours.
    const QString session =
        arguments.size() == 2
            ? qdbus_cast<QVariantMap>(arguments.at(1)).value(QStringLiteral("session_handle")).toString()
            : QString();
    if (!session.isEmpty() && session != m_session) {
      m_bus.send(QDBusMessage::createMethodCall(kService, session, kSession, QStringLiteral("Close")));
    }
    return;
  }
  const Answer answer = std::move(found->second);
  m_answers.erase(found);
  if (arguments.at(0).toUInt() != 0) return fail(QStringLiteral("it was refused"));
  answer(qdbus_cast<QVariantMap>(arguments.at(1)));
}

void PortalHotKeyCenter::activated(const QDBusMessage &signal) {
  const QVariantList arguments = signal.arguments();
  if (arguments.size() < 2 || arguments.at(0).value<QDBusObjectPath>().path() != m_session) return;
  const QString shortcut = arguments.at(1).toString();
  for (const auto &[id, trigger] : m_triggers) {
    if (trigger != shortcut) continue;
    press(id);
    return;
  }
}

void PortalHotKeyCenter::closed(const QDBusMessage &signal) {
  if (m_session.isEmpty() || signal.path() != m_session) return;
  m_session.clear();
  fail(QStringLiteral("it has closed the session"));
}

void PortalHotKeyCenter::fail(const QString &reason) {
  if (m_failed) return;
  m_failed = true;
  closeSession();
  log("Hot key error: the desktop's portal gives no global shortcuts: ", reason.toStdString());
}

}  // namespace velmora
