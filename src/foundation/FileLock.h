// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "foundation/Descriptor.h"

namespace velmora {

/// While it lives, nobody else has the lock of the same file, in this process or another one. The lock is a
/// file beside it, named so with ".lock" at the end, which stays: the file itself is replaced when it is
/// written.
class FileLock {
 public:
  /// Waits for whoever has the lock. Without a folder to lock in there is no lock, and no error either: then
  /// there is nothing that two could write.
  explicit FileLock(const std::filesystem::path &file);

 private:
  Descriptor m_lock;
};

}  // namespace velmora
