// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace velmora {

/// Keeps callbacks of other threads away from an object that is going. A callback holds a shared pointer to
/// the gate and touches the object only inside a `Pass`.
class CallbackGate {
 public:
  /// Stands inside the gate while it lives; false when the gate is closed.
  class Pass {
   public:
    explicit Pass(CallbackGate &gate);
    ~Pass();
    Pass(const Pass &) = delete;
    Pass &operator=(const Pass &) = delete;
    explicit operator bool() const { return m_inside; }

   private:
    CallbackGate &m_gate;
    bool m_inside;
  };

  /// Lets nobody in any more and waits until everybody is out. Fatal on a thread that is inside itself.
  void close();

 private:
  std::mutex m_mutex;
  std::condition_variable m_left;
  bool m_open = true;
  std::multiset<std::thread::id> m_inside;
};

}  // namespace velmora
