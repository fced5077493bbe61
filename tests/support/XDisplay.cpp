// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/XDisplay.h"

#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "support/Waiting.h"

namespace velmora::tests {

namespace {

// Only what gives a new window the focus: its usual keys would be in the way.
constexpr std::string_view kManagerSettings = R"(<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <mouse><context name="Client"><mousebind button="Left" action="Press">
    <action name="Focus"/><action name="Raise"/></mousebind></context></mouse>
  <keyboard/>
</openbox_config>
)";

struct Freed {
  void operator()(void *held) const { std::free(held); }
};
template <typename T>
using Answer = std::unique_ptr<T, Freed>;

/// Starts a program that ends with this one; 0 when it cannot.
pid_t start(std::vector<std::string> command, bool quiet) {
  std::vector<char *> arguments;
  for (std::string &argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child != 0) return child > 0 ? child : 0;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(127);
  if (quiet && !std::freopen("/dev/null", "w", stderr)) ::_exit(127);
  ::execvp(arguments[0], arguments.data());
  ::_exit(127);
}

void end(pid_t process) {
  if (process == 0) return;
  ::kill(process, SIGTERM);
  ::waitpid(process, nullptr, 0);
}

bool hasManager() {
  xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
  bool found = false;
  if (!xcb_connection_has_error(connection)) {
    constexpr std::string_view kName = "_NET_SUPPORTING_WM_CHECK";
    const Answer<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, kName.size(), kName.data()), nullptr));
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const Answer<xcb_get_property_reply_t> property(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, root, atom->atom, XCB_ATOM_WINDOW, 0, 1), nullptr));
    found = property && xcb_get_property_value_length(property.get()) > 0;
  }
  xcb_disconnect(connection);
  return found;
}

}  // namespace

XDisplay::XDisplay() {
  for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
    ::setenv(name, m_home.path().c_str(), 1);
  }
  for (const char *name : {"WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP", "DBUS_SESSION_BUS_ADDRESS"})
    ::unsetenv(name);
  std::array<int, 2> number{};
  if (::pipe(number.data()) != 0) return;
  m_server = start({"Xvfb", "-displayfd", std::to_string(number[1]), "-screen", "0", "1280x800x24",
                    "-nolisten", "tcp", "-noreset"},
                   true);
  ::close(number[1]);
  std::string display;
  for (char digit = 0; ::read(number[0], &digit, 1) == 1 && digit != '\n';) display += digit;
  ::close(number[0]);
  if (display.empty()) {
    std::fputs("XDisplay: Xvfb does not start\n", stderr);
    return;
  }
  ::setenv("DISPLAY", (":" + display).c_str(), 1);
  const auto settings = m_home.write("rc.xml", kManagerSettings);
  m_manager = start({"openbox", "--sm-disable", "--config-file", settings.string()}, true);
  if (eventually([&] { return hasManager() || ::waitpid(m_manager, nullptr, WNOHANG) != 0; }) && hasManager())
    return;
  std::fputs("XDisplay: openbox does not start\n", stderr);
  m_manager = 0;
}

XDisplay::~XDisplay() {
  end(m_manager);
  end(m_server);
}

bool run(const std::vector<std::string> &command) {
  int status = 0;
  const pid_t child = start(command, false);
  return child != 0 && ::waitpid(child, &status, 0) == child && status == 0;
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
