// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/window/Compositor.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace velmora {

bool desktopIsComposited() {
  const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11) return true;
  // Who owns this selection composes the first screen, and X servers of today have one.
  constexpr std::string_view kSelection = "_NET_WM_CM_S0";
  using Free = decltype([](void *reply) { std::free(reply); });
  xcb_connection_t *connection = x11->connection();
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(xcb_intern_atom_reply(
      connection, xcb_intern_atom(connection, 0, kSelection.size(), kSelection.data()), nullptr));
  if (!atom) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
  return owner && owner->owner != XCB_NONE;
}

}  // namespace velmora
