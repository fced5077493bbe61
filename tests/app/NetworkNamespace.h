// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace velmora::tests {

/// Moves the whole program into a network without any link but a loopback that is down; to be called before
/// it has a second thread. As an ordinary user it becomes root of a user namespace. False, and nothing is
/// changed, where the system does not permit that.
inline bool enterOwnNetwork() {
  const auto user = std::to_string(::geteuid());
  const auto group = std::to_string(::getegid());
  constexpr int kOwn = CLONE_NEWNET | CLONE_NEWNS;
  if (::geteuid() != 0 || ::unshare(kOwn) != 0) {
    ::prctl(PR_SET_DUMPABLE, 1);  // who has changed its user owns its files in /proc only then
    if (::unshare(CLONE_NEWUSER | kOwn) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
  }
  return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Runs ip(8) with one line of arguments; false when it fails.
inline bool ip(const std::string &arguments) { return std::system(("ip " + arguments).c_str()) == 0; }

}  // namespace velmora::tests
