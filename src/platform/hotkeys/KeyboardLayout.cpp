// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/hotkeys/KeyboardLayout.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>
// The header of the extension uses a word of C++ as a name.
#define explicit explicit_  // NOLINT(clang-diagnostic-keyword-macro)
#include <xcb/xkb.h>
#undef explicit

#include <QGuiApplication>
#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "foundation/Log.h"

namespace velmora {

namespace {

template <auto Release>
struct Releases {
  template <typename T>
  void operator()(T *held) const {
    Release(held);
  }
};
using Connection = std::unique_ptr<xcb_connection_t, Releases<xcb_disconnect>>;
using Context = std::unique_ptr<xkb_context, Releases<xkb_context_unref>>;
using Keymap = std::unique_ptr<xkb_keymap, Releases<xkb_keymap_unref>>;
using State = std::unique_ptr<xkb_state, Releases<xkb_state_unref>>;
template <typename T>
using Answer = std::unique_ptr<T, Releases<std::free>>;

/// A dead key writes its accent.
std::uint32_t withoutDeath(std::uint32_t keysym) {
  std::array<char, 64> name{};
  xkb_keysym_get_name(keysym, name.data(), name.size());
  std::string_view text(name.data());
  if (!text.starts_with("dead_")) return keysym;
  text.remove_prefix(5);
  if (text == "circumflex") return XKB_KEY_asciicircum;
  if (text == "tilde") return XKB_KEY_asciitilde;
  return xkb_keysym_from_name(text.data(), XKB_KEYSYM_NO_FLAGS);
}

QString capital(std::uint32_t character) {
  // Upper-casing a text could make two letters of one, such as SS; a key shows one.
  const auto code = static_cast<char32_t>(QChar::toUpper(static_cast<char32_t>(character)));
  return QString::fromUcs4(&code, 1);
}

}  // namespace

/// A connection of its own that is told of every change.
class KeyboardLayout::Server {
 public:
  static std::unique_ptr<Server> connect(KeyboardLayout &owner) {
    if (QGuiApplication::platformName() != QLatin1String("xcb")) return nullptr;
    auto server = std::make_unique<Server>(owner);
    if (server->m_keymap) return server;
    log("Keyboard layout error: the X server does not tell it");
    return nullptr;
  }

  explicit Server(KeyboardLayout &owner) : m_owner(owner), m_connection(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(m_connection.get())) return;
    if (!xkb_x11_setup_xkb_extension(m_connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION,
                                     XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS,
                                     nullptr, nullptr, &m_firstEvent, nullptr)) {
      return;
    }
    m_device = xkb_x11_get_core_keyboard_device_id(m_connection.get());
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                      XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr std::uint16_t kParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                     XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS;
    xcb_xkb_select_events(m_connection.get(), static_cast<std::uint16_t>(m_device), kEvents, 0, kEvents,
                          kParts, kParts, nullptr);
    read();
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { takeEvents(); });
    takeEvents();
  }

  [[nodiscard]] std::uint32_t keysymAt(std::uint8_t position, std::uint32_t group) const {
    const xkb_keysym_t *keysyms = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(m_keymap.get(), position, group, 0, &keysyms);
    return count == 1 ? withoutDeath(keysyms[0]) : XKB_KEY_NoSymbol;
  }

  [[nodiscard]] std::uint32_t group() const { return m_group; }

  /// The positions that write `keysym` in the first group, or the present one if that comes first.
  [[nodiscard]] std::vector<std::uint8_t> positionsWriting(std::uint32_t keysym) const {
    std::vector<std::uint8_t> found;
    for (const std::uint32_t group : {m_group, std::uint32_t{0}}) {
      const auto last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(m_keymap.get()), 255);
      for (auto position = xkb_keymap_min_keycode(m_keymap.get()); position <= last; ++position) {
        if (keysymAt(static_cast<std::uint8_t>(position), group) == keysym) {
          found.push_back(static_cast<std::uint8_t>(position));
        }
      }
      if (!found.empty()) break;
    }
    return found;
  }

  /// The modifier that `keysym` sets, as a mask of the core protocol.
  [[nodiscard]] std::uint16_t maskOf(std::uint32_t keysym) const {
    const Answer<xcb_get_modifier_mapping_reply_t> mapping(xcb_get_modifier_mapping_reply(
        m_connection.get(), xcb_get_modifier_mapping(m_connection.get()), nullptr));
    if (!mapping) return 0;
    const auto positions = positionsWriting(keysym);
    const xcb_keycode_t *keycodes = xcb_get_modifier_mapping_keycodes(mapping.get());
    const int each = mapping->keycodes_per_modifier;
    for (int i = 0; i < 8 * each; ++i) {
      if (std::find(positions.begin(), positions.end(), keycodes[i]) != positions.end()) {
        return static_cast<std::uint16_t>(1U << (i / each));
      }
    }
    return 0;
  }

 private:
  void read() {
    m_keymap.reset(xkb_x11_keymap_new_from_device(m_context.get(), m_connection.get(), m_device,
                                                  XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!m_keymap) return;
    const State state(xkb_x11_state_new_from_device(m_keymap.get(), m_connection.get(), m_device));
    if (state) m_group = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
  }

  void takeEvents() {
    bool news = false;
    bool other = false;
    while (const Answer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
      if ((event->response_type & 0x7f) != m_firstEvent) continue;
      // In every event of the extension the byte after the type says which it is.
      if (event->pad0 == XCB_XKB_STATE_NOTIFY) {
        const auto &state = reinterpret_cast<const xcb_xkb_state_notify_event_t &>(*event);
        if (state.group != m_group) news = true;
        m_group = state.group;
      } else {
        other = true;
      }
    }
    if (xcb_connection_has_error(m_connection.get())) m_notifier->setEnabled(false);
    if (other) {
      Keymap before = std::move(m_keymap);
      read();
      if (!m_keymap) m_keymap = std::move(before);
    }
    if (news || other) Q_EMIT m_owner.changed();
    // Reading, and who asks us after a change, may have taken further events from the socket into the queue.
    if (news || other) takeEvents();
  }

  KeyboardLayout &m_owner;
  Connection m_connection;
  Context m_context{xkb_context_new(XKB_CONTEXT_NO_FLAGS)};
  Keymap m_keymap;
  std::uint32_t m_group = 0;
  std::int32_t m_device = 0;
  std::uint8_t m_firstEvent = 0;
  std::unique_ptr<QSocketNotifier> m_notifier;
};

KeyboardLayout &KeyboardLayout::shared() {
  static std::unique_ptr<KeyboardLayout> layout;
  if (!layout) {
    layout = std::make_unique<KeyboardLayout>();
    if (QGuiApplication::instance()) qAddPostRoutine([] { layout.reset(); });
  }
  return *layout;
}

KeyboardLayout::KeyboardLayout() : m_server(Server::connect(*this)) {}
KeyboardLayout::~KeyboardLayout() = default;

QString KeyboardLayout::text(const Key &key) const {
  if (key.kind != Key::Kind::character) return QString::fromUtf16(key.glyph);
  if (m_server) {
    const std::uint32_t character = xkb_keysym_to_utf32(m_server->keysymAt(key.position, m_server->group()));
    if (character > 0x20) return capital(character);
  }
  return capital(xkb_keysym_to_utf32(key.keysym));
}

std::vector<std::uint8_t> KeyboardLayout::positions(const Key &key) const {
  if (m_server && key.kind == Key::Kind::special) {
    auto found = m_server->positionsWriting(key.keysym);
    if (!found.empty()) return found;
  }
  if (key.position == 0) return {};
  return {key.position};
}

const Key *KeyboardLayout::keyWriting(std::uint32_t keysym) const {
  if (m_server) {
    if (keysym >= XKB_KEY_A && keysym <= XKB_KEY_Z) keysym += XKB_KEY_a - XKB_KEY_A;
    for (const std::uint8_t position : m_server->positionsWriting(keysym)) {
      if (const Key *key = keyOf(position, keysym, Qt::Key_unknown)) return key;
    }
  }
  return keyWithKeysym(keysym);
}

std::vector<std::uint16_t> KeyboardLayout::lockMasks() const {
  std::vector<std::uint16_t> masks{0};
  const auto add = [&](std::uint16_t lock) {
    if (lock == 0 || std::find(masks.begin(), masks.end(), lock) != masks.end()) return;
    for (std::size_t i = 0, count = masks.size(); i < count; ++i) {
      masks.push_back(static_cast<std::uint16_t>(masks[i] | lock));
    }
  };
  add(XCB_MOD_MASK_LOCK);
  if (m_server) {
    for (const int lock : {XKB_KEY_Num_Lock, XKB_KEY_Scroll_Lock}) {
      add(m_server->maskOf(static_cast<std::uint32_t>(lock)));
    }
  }
  return masks;
}

}  // namespace velmora
