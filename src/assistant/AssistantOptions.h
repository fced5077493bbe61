// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

namespace velmora {

/// Wrong arguments; says which in one line.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// What velmora-assistant was started with.
struct AssistantOptions {
  int port = 0;
  int signInPort = 0;
  int streams = 16;
  std::string token = {};                 ///< that is accepted in this run; none when empty
  std::filesystem::path recordings = {};  ///< where requests are kept; nowhere when empty
  bool status = false;                    ///< only print what the running services have done
  bool stopAtEof = false;
  bool verbose = false;

  /// Nothing when the program has said what it was asked and is done. Throws `UsageError`, and
  /// `std::runtime_error` for a file that cannot be used.
  [[nodiscard]] static std::optional<AssistantOptions> parse(const QStringList &arguments);
};

}  // namespace velmora
