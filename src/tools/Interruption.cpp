// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Interruption.h"

#include <atomic>
#include <csignal>

namespace velmora {
namespace {

// What a signal handler may touch.
std::atomic<bool> hasArrived{false};
std::atomic<const WakePipe *> wakened{nullptr};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<const WakePipe *>::is_always_lock_free);

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void noteSignal(int /*signal*/) {
  hasArrived = true;
  if (const WakePipe *pipe = wakened) pipe->wake();
}

void handle(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  // Without SA_RESTART, so that a write to a reader who has stopped reading ends too.
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal : kSignals) {
    struct sigaction before {};
    ::sigaction(signal, nullptr, &before);
    // nohup and a shell's background job ignore a signal on purpose.
    if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

Interruption::Interruption() {
  hasArrived = false;
  wakened = &m_wake;
  handle(noteSignal);
}

Interruption::~Interruption() {
  handle(SIG_DFL);
  wakened = nullptr;
}

bool Interruption::arrived() { return hasArrived; }

}  // namespace velmora
