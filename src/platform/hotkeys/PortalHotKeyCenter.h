// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <map>

#include "foundation/MainQueue.h"
#include "platform/hotkeys/HotKeyCenter.h"

namespace velmora {

/// Hot keys by way of the desktop portal's global shortcuts, for Wayland. Nothing here waits for the portal:
/// a registration is taken for good, and the user or the desktop has the last word about its keys. A session
/// binds its shortcuts once, so a change closes it and opens another. A desktop without the portal is one
/// line in the log.
class PortalHotKeyCenter final : public QObject, public HotKeyCenter {
  Q_OBJECT

 public:
  explicit PortalHotKeyCenter(const QDBusConnection &bus);
  /// Closes the session.
  ~PortalHotKeyCenter() override;

  [[nodiscard]] std::optional<std::string> registerHotKey(std::uint32_t id, std::uint32_t keyCode,
                                                          std::uint32_t modifiers) override;
  void unregisterHotKey(std::uint32_t id) override;
  void unregisterAll() override;
  /// The portal asks the user instead: never known here.
  [[nodiscard]] bool isHeldByAnother(std::uint32_t keyCode, std::uint32_t modifiers) override;

 private Q_SLOTS:
  void activated(const QDBusMessage &signal);
  void responded(const QDBusMessage &response);
  void closed(const QDBusMessage &signal);

 private:
  using Answer = std::function<void(const QVariantMap &results)>;

  void changeSoon();
  void openSession();
  void closeSession();
  void bindShortcuts();
  void ask(const QString &method, QVariantList arguments, QVariantMap options, Answer answer);
  void fail(const QString &reason);

  QDBusConnection m_bus;
  std::map<std::uint32_t, QString> m_triggers;  // by the id of the hot key
  QString m_session;                            // empty: none, or not there yet
  std::map<QString, Answer> m_answers;          // by the path of the request
  unsigned m_tokens = 0;
  bool m_changing = false;
  bool m_failed = false;  // and said so
  Alive m_alive;
};

}  // namespace velmora
