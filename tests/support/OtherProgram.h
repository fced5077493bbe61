// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace velmora::tests {

/// Does with real events what xdotool(1) does with these arguments.
[[nodiscard]] bool xdotool(const std::vector<std::string> &arguments);

/// Runs a program to its end; whether it was content.
[[nodiscard]] bool run(const std::vector<std::string> &command);

/// Another program on the display, with a window that has the focus.
class OtherProgram {
 public:
  OtherProgram();
  ~OtherProgram();
  OtherProgram(const OtherProgram &) = delete;
  OtherProgram &operator=(const OtherProgram &) = delete;

  /// Holds a key with these modifiers, as masks of the core protocol, for itself.
  void grab(std::uint8_t position, std::uint16_t modifiers, bool byInputExtension);
  /// How many presses have come to it so far.
  [[nodiscard]] int presses();
  /// Whether its window has the focus now; it takes it if not.
  [[nodiscard]] bool hasFocus();

 private:
  xcb_connection_t *m_connection;
  std::uint32_t m_root = 0;
  std::uint32_t m_window = 0;
  int m_presses = 0;
};

}  // namespace velmora::tests
