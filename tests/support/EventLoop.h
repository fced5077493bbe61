// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include "support/Waiting.h"

namespace velmora::tests {

/// Runs the main thread's event loop until `condition` holds. False when the patience runs out before.
template <typename Condition>
[[nodiscard]] bool runUntil(Condition condition) {
  // A condition about another thread posts no event here: the timer looks at it now and then.
  QTimer look;
  look.start(10);
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

}  // namespace velmora::tests
