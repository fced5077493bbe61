// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace velmora {

/// A thread that runs what is posted, in order, one at a time: callbacks get one of their own, so that a slow
/// one holds up no sound. The thread is made by the first work.
class CallbackThread {
 public:
  using Work = std::function<void()>;

  /// `name` is what debuggers show; at most 15 characters.
  explicit CallbackThread(const char *name);
  /// Drops work that has not begun and waits for that which has; not when that is what destroys the object.
  ~CallbackThread();
  CallbackThread(const CallbackThread &) = delete;
  CallbackThread &operator=(const CallbackThread &) = delete;

  /// Any thread. `work` should not throw.
  void async(Work work);
  /// Whether the caller runs on this thread. Any thread.
  [[nodiscard]] bool isCurrent() const;

 private:
  struct Queue;
  const std::shared_ptr<Queue> m_queue;  // the thread's as well, which may outlive the object by a moment
};

}  // namespace velmora
