// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace velmora {

FileLock::FileLock(const std::filesystem::path &file)
    : m_lock(::open((file.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
  while (m_lock.number() >= 0 && ::flock(m_lock.number(), LOCK_EX) != 0 && errno == EINTR) {
  }
}

}  // namespace velmora
