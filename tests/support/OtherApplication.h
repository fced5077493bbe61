// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <xcb/xcb.h>

#include <cstdlib>

#include "support/Waiting.h"

namespace velmora::tests {

/// A window of another program, as far as the X server knows. It takes the focus when it appears; when it
/// goes the window manager gives the focus back.
class OtherApplication {
 public:
  OtherApplication() : m_connection(xcb_connect(nullptr, nullptr)), m_window(xcb_generate_id(m_connection)) {
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, m_window, screen->root, 900, 500, 80, 60, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_map_window(m_connection, m_window);
    // A window that is not yet viewable refuses the focus.
    while (!focused()) {
      xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  }
  ~OtherApplication() { xcb_disconnect(m_connection); }
  OtherApplication(const OtherApplication &) = delete;
  OtherApplication &operator=(const OtherApplication &) = delete;

 private:
  bool focused() {
    auto *reply = xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr);
    const bool found = !reply || reply->focus == m_window;
    std::free(reply);
    return found;
  }
  xcb_connection_t *m_connection;
  xcb_window_t m_window;
};

}  // namespace velmora::tests
