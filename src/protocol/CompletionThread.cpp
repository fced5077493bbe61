// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/CompletionThread.h"

#include <grpc/support/log.h>
#include <grpcpp/alarm.h>
#include <grpcpp/completion_queue.h>
#include <openssl/crypto.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

#if defined(__SANITIZE_THREAD__)
// gRPC is not instrumented: without these, what a tag hands over would look like a race.
extern "C" void __tsan_release(void *);
extern "C" void __tsan_acquire(void *);
#else
#define __tsan_release(tag) static_cast<void>(tag)
#define __tsan_acquire(tag) static_cast<void>(tag)
#endif

namespace velmora {
namespace {

thread_local bool onCompletionThread = false;

/// gRPC's threads run to the very end of the process: OpenSSL must not be torn down under a handshake by
/// exit(3). Asked while the program loads, since only the first initialisation counts.
[[maybe_unused]] const int keepOpenSsl = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);

/// Work on its way to the thread; deletes itself.
class PostedWork final : public CompletionTag {
 public:
  PostedWork(std::function<void()> work, grpc::CompletionQueue *queue) : m_work(std::move(work)) {
    m_alarm.Set(queue, gpr_now(GPR_CLOCK_MONOTONIC), asTag());
  }
  void complete(bool) override {
    m_work();
    delete this;
  }

 private:
  std::function<void()> m_work;
  grpc::Alarm m_alarm;
};

}  // namespace

void *CompletionTag::asTag() {
  __tsan_release(this);
  return this;
}

struct CompletionThread::Implementation {
  grpc::CompletionQueue queue;
  std::atomic<bool> stopped = false;

  void run() {
    onCompletionThread = true;
    void *pointer = nullptr;
    bool ok = false;
    while (!stopped && queue.Next(&pointer, &ok)) {
      __tsan_acquire(pointer);
      static_cast<CompletionTag *>(pointer)->complete(ok);
    }
  }
};

/// The threads that run: the one that is held, and those that are about to end.
struct CompletionThread::Running {
  std::mutex mutex;
  std::condition_variable changed;
  std::weak_ptr<CompletionThread> held;  // this and below guarded by mutex
  int count = 0;

  static Running &all() {
    // Never destroyed: a thread leaves it last.
    static auto *const running = new Running;
    return *running;
  }
  /// At the end of the process.
  void stop() {
    std::unique_lock lock(mutex);
    if (const auto thread = held.lock()) {
      lock.unlock();
      thread->post([implementation = thread->m_implementation] { implementation->stopped = true; });
      lock.lock();
    }
    if (!isCurrent()) changed.wait(lock, [this] { return count == 0; });
  }
};

std::shared_ptr<CompletionThread> CompletionThread::shared() {
  static const struct AtExit {
    ~AtExit() { Running::all().stop(); }
  } atExit;
  Running &running = Running::all();
  const std::lock_guard lock(running.mutex);
  std::shared_ptr<CompletionThread> thread = running.held.lock();
  if (!thread) {
    running.held = thread = std::shared_ptr<CompletionThread>(new CompletionThread);
    ++running.count;
  }
  return thread;
}

CompletionThread::CompletionThread() : m_implementation(new Implementation) {
  // Nobody waits for it but the end of the process: the last to let go may be a completion.
  std::thread([implementation = m_implementation] {
    implementation->run();
    // Calls of one that was stopped may still be given up.
    if (!implementation->stopped) delete implementation;
    Running &running = Running::all();
    const std::lock_guard lock(running.mutex);
    --running.count;
    running.changed.notify_all();
  }).detach();
}

CompletionThread::~CompletionThread() {
  // On the thread itself, which goes on to the end of what is waiting there.
  if (!m_implementation->stopped)
    post([implementation = m_implementation] { implementation->queue.Shutdown(); });
}

void *CompletionThread::queue() const { return &m_implementation->queue; }

void CompletionThread::post(std::function<void()> work) {
  new PostedWork(std::move(work), &m_implementation->queue);
}

bool CompletionThread::isCurrent() { return onCompletionThread; }

void initialiseGrpc() {
  static std::once_flag once;
  std::call_once(once, [] {
    const char *asked = std::getenv("GRPC_VERBOSITY");
    if (asked == nullptr || *asked == '\0') gpr_set_log_function([](gpr_log_func_args *) {});
  });
}

}  // namespace velmora
