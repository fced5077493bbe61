// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The session of one user of the built application, from log-in to log-out: a home, a network, a bus, a sound
// server, and a panel. The display is that of DISPLAY.
//
//   UserSession session;                       // after enterNetwork(), which runInSession() does
//   session.startPanel();
//   Program velmora(VELMORA, {}, session.environment());
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "foundation/UserDefaults.h"
#include "support/Program.h"
#include "support/SoundServer.h"
#include "support/TemporaryFolder.h"

namespace velmora::tests {

/// Failures throw `std::runtime_error`. One thread, with a QCoreApplication.
class UserSession {
 public:
  /// Moves the program into a network of its own, that is up; before it has a second thread.
  [[nodiscard]] static bool enterNetwork();
  static void setNetworkUp(bool isUp);

  UserSession();
  ~UserSession();
  UserSession(const UserSession &) = delete;
  UserSession &operator=(const UserSession &) = delete;

  /// With more options of trayer(1).
  void startPanel(const std::vector<std::string> &options = {});
  /// Clicks the icon in the panel, with this button of the mouse.
  static void clickIcon(int button = 1);
  static void type(const std::vector<std::string> &keys);

  /// For programs of the session; those of a screen reader's user are told to describe what they show.
  [[nodiscard]] static Program::Environment environment(bool isRead = false);
  [[nodiscard]] const std::filesystem::path &home() const { return m_home.path(); }
  /// The application's settings as they are on disk.
  [[nodiscard]] UserDefaults defaults() const;
  [[nodiscard]] SoundServer &sound() { return *m_sound; }

 private:
  TemporaryFolder m_home;
  std::optional<Program> m_bus;
  std::optional<SoundServer> m_sound;
  std::optional<Program> m_panel;
};

/// The whole of a main() that is no test: `run` with an `Application` in a network of its own. What it throws
/// is told in the program's `name`. Returns what main() does.
template <typename Application>
int runInSession(const char *name, int argc, char **argv, const std::function<int()> &run) {
  if (!UserSession::enterNetwork()) {
    std::cerr << name << ": this system permits no network of one's own\n";
    return 1;
  }
  const Application application(argc, argv);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  try {
    return run();
  } catch (const std::exception &error) {
    std::cerr << name << ": " << error.what() << '\n';
    return 1;
  }
}

/// What /proc tells of a process.
struct ProcessFigures {
  long proportional = 0;  ///< KiB of memory, shared pages divided among those who share them
  long resident = 0;      ///< KiB
  long own = 0;           ///< KiB that it has written itself, whoever else maps the same files
  long threads = 0;
  long descriptors = 0;
  long children = 0;

  [[nodiscard]] static ProcessFigures of(pid_t process);
};

/// At most fifteen characters of its name; empty when there is none.
[[nodiscard]] std::string nameOf(pid_t process);

}  // namespace velmora::tests
