// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/UserSession.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "app/NetworkNamespace.h"
#include "support/OtherProgram.h"

namespace velmora::tests {
namespace {

namespace fs = std::filesystem;

void must(bool worked, const char *what) {
  if (!worked) throw std::runtime_error(what);
}

/// The number after `label` in a file of lines such as "Rss:  28 kB".
long numberIn(const fs::path &file, const std::string &label) {
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);)
    if (line.starts_with(label)) return std::stol(line.substr(label.size()));
  return 0;
}

}  // namespace

bool UserSession::enterNetwork() {
  return enterOwnNetwork() && ip("link set lo up") && ip("link add velmora0 type veth peer name velmora1") &&
         ip("addr add 10.9.0.1/24 dev velmora0") && ip("link set velmora1 up") &&
         ip("link set velmora0 up") && ip("route add default via 10.9.0.2");
}

void UserSession::setNetworkUp(bool isUp) {
  must(ip(isUp ? "link set velmora0 up" : "link set velmora0 down"), "the link");
  if (isUp) must(ip("route replace default via 10.9.0.2"), "the route");
}

UserSession::UserSession() {
  for (const char *name :
       {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_STATE_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
    qputenv(name, home().c_str());
  const std::string address = "unix:path=" + (home() / "bus").string();
  m_bus.emplace("dbus-daemon",
                std::vector<std::string>{"--session", "--nofork", "--print-address", "--address=" + address},
                Program::Environment{});
  must(m_bus->waitForOut("unix:"), "no bus");
  qputenv("DBUS_SESSION_BUS_ADDRESS", address.c_str());
  m_sound.emplace();
}

/// Neither ends by itself.
UserSession::~UserSession() {
  if (m_panel) m_panel->signal(SIGTERM);
  m_bus->signal(SIGTERM);
}

void UserSession::startPanel(const std::vector<std::string> &options) {
  std::vector<std::string> all{"--edge",  "top",      "--align", "right",         "--widthtype",
                               "request", "--height", "24",      "--SetDockType", "true"};
  all.insert(all.end(), options.begin(), options.end());
  m_panel.emplace("trayer", all, Program::Environment{});
}

void UserSession::clickIcon(int button) {
  must(xdotool({"mousemove", "1268", "12", "click", std::to_string(button)}), "xdotool");
}

void UserSession::type(const std::vector<std::string> &keys) {
  std::vector<std::string> arguments{"key"};
  arguments.insert(arguments.end(), keys.begin(), keys.end());
  must(xdotool(arguments), "xdotool");
}

Program::Environment UserSession::environment(bool isRead) {
  Program::Environment all{{"LANG", "C.UTF-8"}};
  if (isRead) all.emplace_back("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
  // Chromium does not run as root in its sandbox.
  if (::getuid() == 0) all.emplace_back("QTWEBENGINE_DISABLE_SANDBOX", "1");
#if defined(__SANITIZE_ADDRESS__)
  // The engine deletes by other sizes than it asks for, and the graphics drivers leak.
  const char *const options = std::getenv("ASAN_OPTIONS");
  all.emplace_back("ASAN_OPTIONS", std::string(options ? options : "") + ":new_delete_type_mismatch=0");
  all.emplace_back("QT_XCB_GL_INTEGRATION", "none");
#endif
  return all;
}

UserDefaults UserSession::defaults() const {
  return UserDefaults(QString::fromStdString((home() / "velmora" / "defaults.json").string()));
}

ProcessFigures ProcessFigures::of(pid_t process) {
  const fs::path folder = "/proc/" + std::to_string(process);
  std::error_code ignored;
  return {.proportional = numberIn(folder / "smaps_rollup", "Pss:"),
          .resident = numberIn(folder / "smaps_rollup", "Rss:"),
          .own = numberIn(folder / "smaps_rollup", "Private_Dirty:"),
          .threads = numberIn(folder / "status", "Threads:"),
          .descriptors = std::distance(fs::directory_iterator(folder / "fd", ignored), {}),
          .children = static_cast<long>(childrenOf(process).size())};
}

std::string nameOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace velmora::tests
