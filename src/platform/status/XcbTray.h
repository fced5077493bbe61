// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QColor>
#include <QObject>
#include <cstdint>
#include <memory>
#include <optional>

#include "foundation/MainQueue.h"

class QSocketNotifier;

namespace velmora {

/// The tray of an X11 desktop, seen over a connection of its own, except that a new one is noticed when the
/// toolkit has heard of it. Main thread.
class XcbTray final : public QObject, private QAbstractNativeEventFilter {
  Q_OBJECT

 public:
  XcbTray();
  ~XcbTray() override;

  /// Another number for each tray, 0 when there is none.
  [[nodiscard]] unsigned number() const { return m_window ? m_trays : 0; }
  /// The colour that it wants of the symbols in it; absent when it does not say.
  [[nodiscard]] std::optional<QColor> foreground() const { return m_foreground; }

 Q_SIGNALS:
  void changed();
  void foregroundChanged();

 private:
  class Server;

  bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
  void takeEvents();
  void look();
  void readForeground();

  const std::unique_ptr<Server> m_server;
  std::unique_ptr<QSocketNotifier> m_notifier;
  std::uint32_t m_window = 0;  // of the present tray
  unsigned m_trays = 0;        // that there were so far
  std::optional<QColor> m_foreground;
  Alive m_alive;
};

}  // namespace velmora
