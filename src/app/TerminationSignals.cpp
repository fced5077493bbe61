// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/TerminationSignals.h"

#include <atomic>
#include <csignal>
#include <utility>

namespace velmora {
namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};
std::atomic<const WakePipe *> arrived = nullptr;

void signalArrived(int /*signal*/) {
  if (const WakePipe *const pipe = arrived) pipe->wake();
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> terminate)
    : m_notifier(m_arrived.descriptor(), QSocketNotifier::Read) {
  QObject::connect(&m_notifier, &QSocketNotifier::activated, [this, terminate = std::move(terminate)] {
    m_arrived.waitUntil(WakePipe::Clock::now());
    terminate();
  });
  arrived = &m_arrived;
  for (const int signal : kSignals) std::signal(signal, signalArrived);
}

TerminationSignals::~TerminationSignals() {
  for (const int signal : kSignals) std::signal(signal, SIG_DFL);
  arrived = nullptr;
}

}  // namespace velmora
