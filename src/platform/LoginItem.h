// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace velmora {

/// A program that the desktop starts when the user logs in: an entry under `identifier` in the user's
/// autostart folder. Several may exist for one identifier. Main thread.
class LoginItem {
 public:
  /// The program is the running one unless another is named.
  explicit LoginItem(std::string identifier, std::filesystem::path program = runningProgram());

  /// Whether the user's autostart folder is there, or can be made, and can be written to.
  [[nodiscard]] static bool canAutostart();

  /// Whether there is an entry that starts something.
  [[nodiscard]] bool isEnabled() const;

  /// Writes the entry anew, or takes it away; without one there, disabling does nothing. False, after one
  /// line in the log, when it could not be done.
  bool setEnabled(bool enabled) const;

 private:
  [[nodiscard]] static std::filesystem::path runningProgram();
  [[nodiscard]] std::filesystem::path file() const;

  std::string m_identifier;
  std::filesystem::path m_program;
};

}  // namespace velmora
