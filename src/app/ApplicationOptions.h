// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmora {

/// Wrong arguments; says which in one line.
struct ApplicationUsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// What velmora was started with.
struct ApplicationOptions {
  /// What is asked of the running application: "", "listen", "preferences" or "quit".
  QString command = {};
  std::optional<std::filesystem::path> deployment = {};

  /// Nothing when the program has said what it was asked and is done; no display is needed for that. Throws
  /// `ApplicationUsageError`.
  [[nodiscard]] static std::optional<ApplicationOptions> parse(const std::vector<std::string> &arguments);
};

}  // namespace velmora
