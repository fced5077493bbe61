// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/OtherProgram.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <QProcess>
#include <QStringList>
#include <array>
#include <cstdlib>
#include <memory>

namespace velmora::tests {

namespace {

struct Freed {
  void operator()(void *held) const { std::free(held); }
};
template <typename T>
using Answer = std::unique_ptr<T, Freed>;

}  // namespace

bool run(const std::vector<std::string> &command) {
  QStringList arguments;
  for (const std::string &argument : command) arguments << QString::fromStdString(argument);
  const QString program = arguments.takeFirst();
  return QProcess::execute(program, arguments) == 0;
}

bool xdotool(const std::vector<std::string> &arguments) {
  std::vector<std::string> command{"xdotool"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run(command);
}

OtherProgram::OtherProgram() : m_connection(xcb_connect(nullptr, nullptr)) {
  const xcb_screen_t &screen = *xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
  m_root = screen.root;
  m_window = xcb_generate_id(m_connection);
  const std::array<std::uint32_t, 1> events{XCB_EVENT_MASK_KEY_PRESS};
  xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, m_root, 600, 400, 100, 100, 0,
                    XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, XCB_CW_EVENT_MASK, events.data());
  xcb_map_window(m_connection, m_window);
  xcb_flush(m_connection);
}

OtherProgram::~OtherProgram() { xcb_disconnect(m_connection); }

void OtherProgram::grab(std::uint8_t position, std::uint16_t modifiers, bool byInputExtension) {
  if (!byInputExtension) {
    xcb_grab_key(m_connection, 0, m_root, modifiers, position, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
  } else {
    const Answer<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
        m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
    const std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    const std::uint32_t wanted = modifiers;
    xcb_input_xi_passive_grab_device(m_connection, XCB_CURRENT_TIME, m_root, XCB_NONE, position,
                                     XCB_INPUT_DEVICE_ALL_MASTER, 1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE,
                                     XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_MODE_22_ASYNC, 0, &mask,
                                     &wanted);
  }
  const Answer<xcb_get_input_focus_reply_t> done(
      xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
}

int OtherProgram::presses() {
  while (const Answer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
    if ((event->response_type & 0x7f) == XCB_KEY_PRESS) ++m_presses;
  }
  return m_presses;
}

bool OtherProgram::hasFocus() {
  const Answer<xcb_get_input_focus_reply_t> focus(
      xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
  if (focus && focus->focus == m_window) return true;
  // A manager that has just started may have missed the window, or give no focus to what it found.
  const Answer<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
      m_connection, xcb_get_window_attributes(m_connection, m_window), nullptr));
  if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, m_window, XCB_CURRENT_TIME);
  } else {
    xcb_map_window(m_connection, m_window);
  }
  xcb_flush(m_connection);
  return false;
}

}  // namespace velmora::tests
