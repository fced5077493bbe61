// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/CallbackThread.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <string>
#include <utility>

namespace velmora {

struct CallbackThread::Queue {
  explicit Queue(const char *threadName) : name(threadName) {}

  void run() {
    ::pthread_setname_np(::pthread_self(), name.c_str());
    std::unique_lock lock(mutex);
    for (;;) {
      changed.wait(lock, [this] { return stopping || !posted.empty(); });
      if (stopping) return;
      Work work = std::move(posted.front());
      posted.pop_front();
      lock.unlock();
      work();
      work = nullptr;  // what it held may be what keeps the object alive
      lock.lock();
    }
  }

  const std::string name;
  std::atomic<std::thread::id> id;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Work> posted;  // this and below guarded by mutex
  bool stopping = false;
  std::thread thread;
};

CallbackThread::CallbackThread(const char *name) : m_queue(std::make_shared<Queue>(name)) {}

CallbackThread::~CallbackThread() {
  std::deque<Work> dropped;
  std::thread thread;
  {
    const std::lock_guard lock(m_queue->mutex);
    m_queue->stopping = true;
    dropped.swap(m_queue->posted);
    thread.swap(m_queue->thread);
    m_queue->changed.notify_all();
  }
  if (!thread.joinable()) return;
  if (isCurrent()) {
    thread.detach();
  } else {
    thread.join();
  }
}

void CallbackThread::async(Work work) {
  const std::lock_guard lock(m_queue->mutex);
  if (m_queue->stopping) return;
  m_queue->posted.push_back(std::move(work));
  if (!m_queue->thread.joinable()) {
    m_queue->thread = std::thread([queue = m_queue] {
      queue->id = std::this_thread::get_id();
      queue->run();
    });
  }
  m_queue->changed.notify_all();
}

bool CallbackThread::isCurrent() const { return m_queue->id.load() == std::this_thread::get_id(); }

}  // namespace velmora
