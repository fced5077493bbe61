// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace velmora {

/// How loud it is, as a bar on one line of a terminal that is drawn over and over. One thread.
class LevelMeter {
 public:
  /// Draws on `descriptor`, and only when that is a terminal; it stays the caller's.
  explicit LevelMeter(int descriptor);
  /// Leaves an empty line.
  ~LevelMeter();
  LevelMeter(const LevelMeter &) = delete;
  LevelMeter &operator=(const LevelMeter &) = delete;

  void show(std::span<const std::int16_t> samples);
  void clear();

 private:
  void draw(const std::string &line);

  const int m_descriptor;  // -1: no terminal
  bool m_isShown = false;
};

}  // namespace velmora
