// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/StateFolder.h"

#include <sys/stat.h>

#include <cstdlib>

namespace velmora {

std::optional<std::filesystem::path> stateFolder() {
  std::filesystem::path folder;
  if (const char *state = std::getenv("XDG_STATE_HOME"); state && *state == '/') {
    folder = state;
  } else if (const char *home = std::getenv("HOME"); home && *home == '/') {
    folder = std::filesystem::path(home) / ".local" / "state";
  } else {
    return std::nullopt;
  }
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  folder /= "velmora";
  if (::mkdir(folder.c_str(), 0700) != 0 && !std::filesystem::is_directory(folder, error))
    return std::nullopt;
  return folder;
}

}  // namespace velmora
