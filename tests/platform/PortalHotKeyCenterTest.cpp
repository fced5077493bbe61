// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/PortalHotKeyCenter.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include "platform/hotkeys/KeyCodes.h"
#include "platform/hotkeys/SymbolicHotKeys.h"
#include "support/CapturedLog.h"
#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using enum hot_key_modifier::Flag;
using tests::runUntil;

const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");

/// One more program on the bus of the test.
QDBusConnection program(const char *name) {
  return QDBusConnection::connectToBus(QDBusConnection::SessionBus, QString::fromLatin1(name));
}

/// The portal of a desktop, with one user who is content with everything.
class Portal final : public QDBusVirtualObject {
 public:
  Portal() {
    EXPECT_TRUE(m_bus.registerVirtualObject(kPath, this, QDBusConnection::SubPath));
    EXPECT_TRUE(m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
  }

  [[nodiscard]] QString introspect(const QString &) const override { return {}; }

  bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override {
    if (message.member() == QLatin1String("Close")) {
      EXPECT_EQ(message.path(), session);
      session.clear();
      shortcuts.clear();
      return connection.send(message.createReply());
    }
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last());
    const QString sender = message.service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    const auto pathOf = [&](const char *kind, const char *token) {
      return kPath + QStringLiteral("/%1/%2/%3")
                         .arg(QLatin1String(kind), sender, options[QLatin1String(token)].toString());
    };
    const QString request = pathOf("request", "handle_token");
    QVariantMap results;
    if (message.member() == QLatin1String("CreateSession")) {
      EXPECT_TRUE(session.isEmpty()) << "there is one already";
      session = pathOf("session", "session_handle_token");
      results[QStringLiteral("session_handle")] = session;
    } else {
      EXPECT_EQ(message.arguments().at(0).value<QDBusObjectPath>().path(), session);
      EXPECT_TRUE(shortcuts.isEmpty()) << "bound twice";
      const auto wanted = message.arguments().at(1).value<QDBusArgument>();
      for (wanted.beginArray(); !wanted.atEnd();) {
        QString id;
        QVariantMap properties;
        wanted.beginStructure();
        wanted >> id >> properties;
        wanted.endStructure();
        EXPECT_EQ(properties[QStringLiteral("preferred_trigger")].toString(), id);
        shortcuts << id;
      }
      wanted.endArray();
    }
    connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    QDBusMessage response = QDBusMessage::createSignal(
        request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
    response << 0U << results;
    return connection.send(response);
  }

  void activate(const QString &whose, const QString &id) {
    QDBusMessage signal = QDBusMessage::createSignal(
        kPath, QStringLiteral("org.freedesktop.portal.GlobalShortcuts"), QStringLiteral("Activated"));
    signal << QVariant::fromValue(QDBusObjectPath(whose)) << id << qulonglong{1} << QVariantMap();
    m_bus.send(signal);
  }

  QString session;
  QStringList shortcuts;  // of the session

 private:
  QDBusConnection m_bus = program("portal");
};

TEST(PortalHotKeys, AreBoundInOneSession) {
  Portal portal;
  std::vector<std::uint32_t> presses;
  {
    PortalHotKeyCenter center(program("application"));
    center.setPressed([&](std::uint32_t id) { presses.push_back(id); });
    EXPECT_FALSE(center.registerHotKey(7, 122, kCommand));
    EXPECT_FALSE(center.registerHotKey(8, 0, kControl | kOption | kShift));
    EXPECT_TRUE(center.registerHotKey(9, kUnknownKeyCode, kCommand));
    const QStringList both{QStringLiteral("LOGO+F1"), QStringLiteral("CTRL+ALT+SHIFT+a")};
    ASSERT_TRUE(runUntil([&] { return portal.shortcuts == both; }));
    portal.activate(QStringLiteral("/another/session"), both[0]);
    portal.activate(portal.session, both[1]);
    portal.activate(portal.session, both[0]);
    ASSERT_TRUE(runUntil([&] { return presses.size() >= 2; }));
    EXPECT_EQ(presses, (std::vector<std::uint32_t>{8, 7}));
    center.unregisterHotKey(7);
    EXPECT_TRUE(runUntil([&] { return portal.shortcuts == both.last(1); }));
  }
  EXPECT_TRUE(runUntil([&] { return portal.session.isEmpty(); }));
}

TEST(PortalHotKeys, WithoutAPortalAreOneLine) {
  const tests::CapturedLog log;
  PortalHotKeyCenter center(program("alone"));
  EXPECT_FALSE(center.registerHotKey(1, 122, kCommand));
  EXPECT_TRUE(runUntil(
      [&] { return log.count("Hot key error: the desktop's portal gives no global shortcuts: ") > 0; }));
  EXPECT_FALSE(center.registerHotKey(2, 120, kCommand));
  QCoreApplication::processEvents();
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST(SymbolicHotKeys, ComeFromTheDesktopInTheBackgroundAsItWritesThem) {
  const std::vector<SymbolicHotKey> all{{118, kOption, true},
                                        {48, kCommand | kShift, true},
                                        {0, kControl | kOption, true},
                                        {49, kCommand, true}};
  const auto becomeAll = [&] {
    refreshSymbolicHotKeys();
    return runUntil([&] { return copySymbolicHotKeys() == all; });
  };
  const tests::TemporaryFolder folder;
  const auto settings = folder.write(
      "settings",
      "org.gnome.desktop.wm.keybindings close ['<Alt>F4', 'XF86Close']\n"
      "org.gnome.desktop.wm.keybindings switch ['<Shift><Super>Tab']\n"
      "org.gnome.desktop.wm.keybindings nothing @as []\n"
      "org.gnome.shell.keybindings odd ['<Hyper>a', '<Super', '', '<Super>Nonsense', '<Primary><Alt>A']\n"
      "org.gnome.settings-daemon.plugins.media-keys custom-keybindings ['/a/']\n"
      "org.gnome.terminal.keybindings copy '<Super>c'\n");
  const auto script = folder.write("gsettings",
                                   "#!/bin/sh\nif [ \"$1\" = get ]; then echo \"'<Super>space'\"\n"
                                   "else cat '" +
                                       settings.string() + "'; fi\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  qputenv("PATH", (folder.path().string() + ":").c_str() + qgetenv("PATH"));
  qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
  EXPECT_TRUE(becomeAll());
  std::ignore = folder.write("gsettings", "#!/bin/sh\nexit 1\n");
  refreshSymbolicHotKeys();
  EXPECT_TRUE(runUntil([] { return !copySymbolicHotKeys(); })) << "a failing program is as good as none";
  std::ignore =
      folder.write("kglobalshortcutsrc",
                   "[kwin]\n_k_friendly_name=Alt+F9\nClose=Alt+F4,Alt+F4,Close Window\n"
                   "Walk=Meta+Shift+Tab\\tCtrl+Alt+A,none,A\\, b\nOff=none,Alt+F5,Off\nEmpty=,,\nnoise\n"
                   "[services][a.desktop]\n_launch=Meta+Space\n");
  qputenv("XDG_CURRENT_DESKTOP", "KDE");
  qputenv("XDG_CONFIG_HOME", folder.path().c_str());
  EXPECT_TRUE(becomeAll());
}

}  // namespace
}  // namespace velmora
