// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <vector>

#include "foundation/Descriptor.h"

namespace velmora {

/// The folder of a running service, which only this user can enter: keys, deployment, the socket of its
/// status. Removed with the object; one that a killed service left behind is removed by the next that starts.
class RunningFolder {
 public:
  /// Makes one in the run-time directory, or in that for temporary files where there is none. Throws
  /// `std::runtime_error`.
  RunningFolder();
  ~RunningFolder() { remove(); }
  RunningFolder(const RunningFolder &) = delete;
  RunningFolder &operator=(const RunningFolder &) = delete;

  [[nodiscard]] const std::filesystem::path &path() const { return m_path; }
  /// Makes a folder of this name in it, which only this user can enter. Throws `std::runtime_error`.
  [[nodiscard]] std::filesystem::path makePrivate(const char *name) const;
  /// Any thread; nothing is done the second time.
  void remove() const noexcept;

  /// Those of all running services of this user.
  [[nodiscard]] static std::vector<std::filesystem::path> all();

 private:
  std::filesystem::path m_path;
  Descriptor m_lock;  // held as long as this process runs
};

}  // namespace velmora
