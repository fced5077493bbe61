// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/process/WakePipe.h"

namespace velmora {

/// Turns the first SIGINT, SIGTERM or SIGHUP into a wish that waits look at; a second one ends the program at
/// once. There is one object in a program, on the thread that waits.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption &) = delete;
  Interruption &operator=(const Interruption &) = delete;

  /// Any thread.
  [[nodiscard]] static bool arrived();
  /// Woken when a signal arrives, and by whoever else has news for the waiting thread.
  [[nodiscard]] const WakePipe &wake() const { return m_wake; }

 private:
  WakePipe m_wake;
};

}  // namespace velmora
