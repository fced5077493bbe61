// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/XcbHotKeyCenter.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <QSocketNotifier>
#include <algorithm>
#include <cstdlib>
#include <functional>

#include "foundation/Log.h"
#include "platform/hotkeys/KeyboardLayout.h"

namespace velmora {

namespace {

struct Freed {
  void operator()(void *held) const { std::free(held); }
};
template <typename T>
using Answer = std::unique_ptr<T, Freed>;

std::uint16_t maskOf(std::uint32_t modifiers) {
  using enum hot_key_modifier::Flag;
  unsigned mask = 0;
  if (modifiers & kShift) mask |= XCB_MOD_MASK_SHIFT;
  if (modifiers & kControl) mask |= XCB_MOD_MASK_CONTROL;
  if (modifiers & kOption) mask |= XCB_MOD_MASK_1;
  if (modifiers & kCommand) mask |= XCB_MOD_MASK_4;
  return static_cast<std::uint16_t>(mask);
}

constexpr std::uint16_t kModifiers =
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;

}  // namespace

class XcbHotKeyCenter::Server {
 public:
  Server() : m_connection(xcb_connect(nullptr, nullptr)) {
    if (!usable()) return;
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)); screen.rem;
         xcb_screen_next(&screen)) {
      m_roots.push_back(screen.data->root);
    }
  }
  ~Server() { xcb_disconnect(m_connection); }
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  [[nodiscard]] bool usable() const { return xcb_connection_has_error(m_connection) == 0; }

  /// False, and nothing is grabbed, when somebody else holds one of the combinations.
  [[nodiscard]] bool grab(const std::vector<std::uint8_t> &positions, std::uint16_t modifiers,
                          const std::vector<std::uint16_t> &locks) {
    std::vector<xcb_void_cookie_t> cookies;
    forEach(positions, locks, [&](xcb_window_t root, std::uint8_t position, std::uint16_t lock) {
      // With owner events the release would not come while a window of this program has the focus.
      cookies.push_back(xcb_grab_key_checked(m_connection, 0, root,
                                             static_cast<std::uint16_t>(modifiers | lock), position,
                                             XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    });
    bool all = !cookies.empty();
    for (const xcb_void_cookie_t cookie : cookies) {
      const Answer<xcb_generic_error_t> error(xcb_request_check(m_connection, cookie));
      all = all && !error;
    }
    if (all && usable()) return true;
    ungrab(positions, modifiers, locks);
    return false;
  }

  void ungrab(const std::vector<std::uint8_t> &positions, std::uint16_t modifiers,
              const std::vector<std::uint16_t> &locks) {
    forEach(positions, locks, [&](xcb_window_t root, std::uint8_t position, std::uint16_t lock) {
      xcb_ungrab_key(m_connection, position, root, static_cast<std::uint16_t>(modifiers | lock));
    });
    xcb_flush(m_connection);
  }

  /// A grab of the second input extension, which knows nothing of the core protocol's; for a trial, since it
  /// goes with the connection only.
  [[nodiscard]] bool grabByInputExtension(const std::vector<std::uint8_t> &positions,
                                          std::uint16_t modifiers) {
    const Answer<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
    if (!version) return true;
    bool all = true;
    forEach(positions, {0}, [&](xcb_window_t root, std::uint8_t position, std::uint16_t) {
      const std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
      const std::uint32_t wanted = modifiers;
      const auto cookie = xcb_input_xi_passive_grab_device(
          m_connection, XCB_CURRENT_TIME, root, XCB_NONE, position, XCB_INPUT_DEVICE_ALL_MASTER, 1, 1,
          XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, 0, &mask,
          &wanted);
      const Answer<xcb_input_xi_passive_grab_device_reply_t> reply(
          xcb_input_xi_passive_grab_device_reply(m_connection, cookie, nullptr));
      all = all && (!reply || reply->num_modifiers == 0);
    });
    return all;
  }

  /// Calls `pressed` for each press from now on, not for its repetitions.
  void watch(std::function<void(std::uint8_t position, std::uint16_t state)> pressed) {
    m_pressed = std::move(pressed);
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { takeEvents(); });
  }

  void takeEvents() {
    while (const Answer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
      const auto &key = reinterpret_cast<const xcb_key_press_event_t &>(*event);
      switch (event->response_type & 0x7f) {
        case XCB_KEY_PRESS: {
          // A key that repeats is released and pressed again at one and the same time.
          const bool repeated = key.detail == m_released && key.time == m_releasedAt;
          m_released = 0;
          if (!repeated) m_pressed(key.detail, key.state);
          break;
        }
        case XCB_KEY_RELEASE:
          m_released = key.detail;
          m_releasedAt = key.time;
          break;
        default: break;
      }
    }
    if (!usable() && m_notifier->isEnabled()) {
      m_notifier->setEnabled(false);
      log("Hot key error: the connection to the X server is broken");
    }
  }

 private:
  template <typename Action>
  void forEach(const std::vector<std::uint8_t> &positions, const std::vector<std::uint16_t> &locks,
               Action action) {
    for (const xcb_window_t root : m_roots) {
      for (const std::uint8_t position : positions) {
        for (const std::uint16_t lock : locks) action(root, position, lock);
      }
    }
  }

  xcb_connection_t *const m_connection;  // never null
  std::vector<xcb_window_t> m_roots;
  std::function<void(std::uint8_t, std::uint16_t)> m_pressed;
  std::unique_ptr<QSocketNotifier> m_notifier;
  xcb_keycode_t m_released = 0;
  xcb_timestamp_t m_releasedAt = 0;
};

XcbHotKeyCenter::XcbHotKeyCenter()
    : m_server(std::make_unique<Server>()), m_locks(KeyboardLayout::shared().lockMasks()) {
  if (!m_server->usable()) return;
  m_server->watch([this](std::uint8_t position, std::uint16_t state) { pressed(position, state); });
  connect(&KeyboardLayout::shared(), &KeyboardLayout::changed, this, &XcbHotKeyCenter::takeAnew);
}

XcbHotKeyCenter::~XcbHotKeyCenter() = default;

std::optional<std::string> XcbHotKeyCenter::registerHotKey(std::uint32_t id, std::uint32_t keyCode,
                                                           std::uint32_t modifiers) {
  Grab grab{.key = keyWithCode(keyCode), .modifiers = modifiers};
  if (!grab.key) return "there is no such key";
  if (!m_server->usable()) return "the X server does not answer";
  if (!take(grab))
    return grab.positions.empty() ? "this keyboard has no such key" : "another program holds it";
  m_grabs.insert_or_assign(id, std::move(grab));
  return {};
}

void XcbHotKeyCenter::unregisterHotKey(std::uint32_t id) {
  const auto found = m_grabs.find(id);
  if (found == m_grabs.end()) return;
  release(found->second);
  m_grabs.erase(found);
}

void XcbHotKeyCenter::unregisterAll() {
  for (auto &[id, grab] : m_grabs) release(grab);
  m_grabs.clear();
}

bool XcbHotKeyCenter::isHeldByAnother(std::uint32_t keyCode, std::uint32_t modifiers) {
  const Key *key = keyWithCode(keyCode);
  if (!key) return false;
  for (const auto &[id, grab] : m_grabs) {
    if (grab.key == key && grab.modifiers == modifiers && !grab.positions.empty()) return false;
  }
  // Over a connection that ends with the trial: to end the trial must not end a grab of ours. Compositors
  // grab by the input extension, others by the core protocol, and neither trial sees the grabs of the other
  // kind.
  Server trial;
  const auto positions = KeyboardLayout::shared().positions(*key);
  if (!trial.usable() || positions.empty()) return false;
  return !trial.grab(positions, maskOf(modifiers), {0}) ||
         !trial.grabByInputExtension(positions, maskOf(modifiers));
}

bool XcbHotKeyCenter::take(Grab &grab) {
  grab.positions = KeyboardLayout::shared().positions(*grab.key);
  const bool taken = m_server->grab(grab.positions, maskOf(grab.modifiers), m_locks);
  // The answers may have brought presses along, which nobody would come to fetch.
  MainQueue::main().async(m_alive, [this] { m_server->takeEvents(); });
  return taken;
}

void XcbHotKeyCenter::release(Grab &grab) {
  m_server->ungrab(grab.positions, maskOf(grab.modifiers), m_locks);
  grab.positions.clear();
}

void XcbHotKeyCenter::takeAnew() {
  for (auto &[id, grab] : m_grabs) release(grab);
  m_locks = KeyboardLayout::shared().lockMasks();
  for (auto &[id, grab] : m_grabs) {
    if (take(grab)) continue;
    grab.positions.clear();
    log("Hot key error: after a change of the keyboard layout, key ", grab.key->keyCode, " is not to be had");
  }
}

void XcbHotKeyCenter::pressed(std::uint8_t position, std::uint16_t state) {
  for (const auto &[id, grab] : m_grabs) {
    if (maskOf(grab.modifiers) != (state & kModifiers)) continue;
    if (std::find(grab.positions.begin(), grab.positions.end(), position) == grab.positions.end()) continue;
    // What is told may register and unregister.
    press(id);
    return;
  }
}

}  // namespace velmora
