// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/status/XcbTray.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QSocketNotifier>
#include <array>
#include <cstdlib>
#include <string>

namespace velmora {
namespace {

struct Freed {
  void operator()(void *held) const { std::free(held); }
};
template <typename T>
using Answer = std::unique_ptr<T, Freed>;

}  // namespace

class XcbTray::Server {
 public:
  Server() : connection(xcb_connect(nullptr, &m_screen)) {
    if (!usable()) return;
    selection = atom("_NET_SYSTEM_TRAY_S" + std::to_string(m_screen));
    manager = atom("MANAGER");
    colors = atom("_NET_SYSTEM_TRAY_COLORS");
  }
  ~Server() { xcb_disconnect(connection); }
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  [[nodiscard]] bool usable() const { return xcb_connection_has_error(connection) == 0; }
  [[nodiscard]] xcb_window_t owner() const {
    const Answer<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr));
    return reply ? reply->owner : XCB_NONE;
  }

  xcb_connection_t *const connection;  // never null
  xcb_atom_t selection = XCB_NONE;     // whoever owns it is the tray
  xcb_atom_t manager = XCB_NONE;       // of the message by which a tray announces itself
  xcb_atom_t colors = XCB_NONE;

 private:
  [[nodiscard]] xcb_atom_t atom(const std::string &name) const {
    const Answer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    return reply ? reply->atom : XCB_NONE;
  }

  int m_screen = 0;
};

XcbTray::XcbTray() : m_server(std::make_unique<Server>()) {
  if (!m_server->usable()) return;
  look();
  m_notifier =
      std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_server->connection), QSocketNotifier::Read);
  connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { takeEvents(); });
  qApp->installNativeEventFilter(this);
}

XcbTray::~XcbTray() = default;

bool XcbTray::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto &event = *static_cast<const xcb_client_message_event_t *>(message);
  // An item that were made before the toolkit knows of the tray would be put into it twice, and be lost.
  if ((event.response_type & 0x7f) == XCB_CLIENT_MESSAGE && event.type == m_server->manager &&
      event.data.data32[1] == m_server->selection) {
    MainQueue::main().async(m_alive, [this] { look(); });
  }
  return false;
}

void XcbTray::takeEvents() {
  bool hasGone = false;
  bool hasOtherColors = false;
  while (const Answer<xcb_generic_event_t> event{xcb_poll_for_event(m_server->connection)}) {
    const auto type = event->response_type & 0x7f;
    if (type == XCB_DESTROY_NOTIFY) {
      if (reinterpret_cast<const xcb_destroy_notify_event_t &>(*event).window == m_window) hasGone = true;
    } else if (type == XCB_PROPERTY_NOTIFY) {
      if (reinterpret_cast<const xcb_property_notify_event_t &>(*event).atom == m_server->colors)
        hasOtherColors = true;
    }
  }
  if (!m_server->usable()) {
    m_notifier->setEnabled(false);
    hasGone = true;
  }
  if (hasGone && m_window != XCB_NONE) {
    m_window = XCB_NONE;
    m_foreground.reset();
    Q_EMIT changed();
  } else if (hasOtherColors) {
    readForeground();
  }
}

void XcbTray::look() {
  m_window = m_server->owner();
  if (m_window != XCB_NONE) {
    ++m_trays;
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_server->connection, m_window, XCB_CW_EVENT_MASK, &events);
    // It may have gone before its end was asked for.
    if (m_server->owner() != m_window) m_window = XCB_NONE;
  }
  readForeground();
  Q_EMIT changed();
}

void XcbTray::readForeground() {
  constexpr std::uint32_t kRoom = 3;  // red, green and blue of the foreground come first, 16 bits each
  std::optional<QColor> color;
  if (m_window != XCB_NONE) {
    const Answer<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_server->connection,
        xcb_get_property(m_server->connection, 0, m_window, m_server->colors, XCB_ATOM_CARDINAL, 0, kRoom),
        nullptr));
    if (reply && reply->format == 32 && reply->value_len == kRoom) {
      const auto *const parts =
          static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));  // of the reply
      std::array<ushort, kRoom> rgb{};
      for (std::size_t i = 0; i < kRoom; ++i) rgb[i] = static_cast<ushort>(parts[i]);
      color = QColor::fromRgba64(rgb[0], rgb[1], rgb[2]);
    }
  }
  // The answers may have brought events along, which nobody would come to fetch.
  MainQueue::main().async(m_alive, [this] { takeEvents(); });
  if (color == m_foreground) return;
  m_foreground = color;
  Q_EMIT foregroundChanged();
}

}  // namespace velmora
