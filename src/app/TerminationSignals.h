// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSocketNotifier>
#include <functional>

#include "platform/process/WakePipe.h"

namespace velmora {

/// Has SIGTERM, SIGINT and SIGHUP end the program as its user would. One object, on the main thread.
class TerminationSignals {
 public:
  /// `terminate` is called on the main thread, from its event loop.
  explicit TerminationSignals(std::function<void()> terminate);
  /// From now on they end the program at once, as they usually do.
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals &) = delete;
  TerminationSignals &operator=(const TerminationSignals &) = delete;

 private:
  WakePipe m_arrived;
  QSocketNotifier m_notifier;
};

}  // namespace velmora
