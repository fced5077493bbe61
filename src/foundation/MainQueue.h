// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Work for the main thread, which owns every widget, the settings and the timers.
//
//   MainQueue::main().async(m_alive, [this] { showRequest(); });    // from any thread
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace velmora {

/// Tells whether an object that posts work about itself is still there. A member, best the last one: work
/// that names it is dropped once the object is gone. The object is destroyed on the main thread.
class Alive {
 public:
  Alive() : m_token(std::make_shared<int>()) {}
  Alive(const Alive &) = delete;
  Alive &operator=(const Alive &) = delete;

  /// May be taken on any thread while the object lives.
  [[nodiscard]] std::weak_ptr<const void> watch() const { return m_token; }

 private:
  std::shared_ptr<const void> m_token;
};

/// Runs what is posted on the main thread, in the order of posting, from its event loop and never inside the
/// call that posts. Work posted before the application object exists waits for it; work left at the end of
/// the program is destroyed unrun.
class MainQueue {
 public:
  using Work = std::function<void()>;

  /// The queue of the thread that makes the application object. Any thread.
  static MainQueue &main();

  /// Any thread. `work` should not throw.
  void async(Work work);
  /// The same, dropped when `owner` is gone by then.
  void async(const Alive &owner, Work work);

  /// Runs `work` in `delay` or a little later, unless `owner` is gone by then. Any thread.
  void after(std::chrono::milliseconds delay, const Alive &owner, Work work);

  MainQueue(const MainQueue &) = delete;
  MainQueue &operator=(const MainQueue &) = delete;

  /// Called by each application object as it is made.
  static void attach();

 private:
  struct State;
  MainQueue();
  ~MainQueue();

  std::unique_ptr<State> m_state;
};

}  // namespace velmora
