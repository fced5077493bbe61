// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/MainQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <deque>
#include <mutex>
#include <utility>

#include "foundation/fatal.h"

namespace velmora {

/// A queue of our own behind an eventfd, and not events of Qt: their hand-over is invisible to
/// ThreadSanitizer in a Qt that is not instrumented, this one is not.
struct MainQueue::State {
  State() : wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wakeUp < 0) fatal("The main queue has no event descriptor");
  }
  ~State() { ::close(wakeUp); }

  /// The application object brings the event loop, and takes it away again.
  void attach() {
    notifier = std::make_unique<QSocketNotifier>(wakeUp, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), [this] { run(); });
  }

  /// Takes one piece at a time, so that the event loop of a modal alert inside it finds the pieces after it.
  void run() {
    eventfd_t count = 0;
    ::eventfd_read(wakeUp, &count);
    Work next;
    {
      const std::lock_guard lock(mutex);
      if (posted.empty()) return;
      next = std::move(posted.front());
      posted.pop_front();
      if (!posted.empty()) ::eventfd_write(wakeUp, 1);
    }
    next();
  }

  const int wakeUp;
  std::unique_ptr<QSocketNotifier> notifier;
  std::mutex mutex;
  std::deque<Work> posted;  // guarded by mutex
};

void MainQueue::attach() {
  main().m_state->attach();
  qAddPostRoutine([] { main().m_state->notifier.reset(); });
}

namespace {
void attachMainQueue() { MainQueue::attach(); }
Q_COREAPP_STARTUP_FUNCTION(attachMainQueue)
}  // namespace

MainQueue::MainQueue() : m_state(std::make_unique<State>()) {}
MainQueue::~MainQueue() = default;

MainQueue &MainQueue::main() {
  static MainQueue queue;
  return queue;
}

void MainQueue::async(Work work) {
  {
    const std::lock_guard lock(m_state->mutex);
    m_state->posted.push_back(std::move(work));
  }
  ::eventfd_write(m_state->wakeUp, 1);
}

void MainQueue::async(const Alive &owner, Work work) {
  async([watch = owner.watch(), work = std::move(work)] {
    if (!watch.expired()) work();
  });
}

void MainQueue::after(std::chrono::milliseconds delay, const Alive &owner, Work work) {
  async([delay, watch = owner.watch(), work = std::move(work)]() mutable {
    auto *const timer = new QTimer(QCoreApplication::instance());
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, [timer, watch = std::move(watch), work = std::move(work)] {
      timer->deleteLater();
      if (!watch.expired()) work();
    });
    timer->start(delay);
  });
}

}  // namespace velmora
