// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace velmora::tests {

/// Stands between a client and a server on loopback and fails as networks do.
class Relay {
 public:
  /// Listens on a free port and passes one connection on to `serverPort`.
  explicit Relay(int serverPort);
  ~Relay();

  [[nodiscard]] std::string address() const { return "127.0.0.1:" + std::to_string(m_port); }
  /// From now on nothing passes and nobody is told, as when a cable is pulled.
  void freeze() { m_mode = Mode::frozen; }
  /// Tears the connection down with a reset.
  void reset() { m_mode = Mode::reset; }

 private:
  enum class Mode { passing, frozen, reset, closing };
  void run(int serverPort);

  int m_listener = -1;
  int m_port = 0;
  std::atomic<Mode> m_mode{Mode::passing};
  std::thread m_thread;
};

}  // namespace velmora::tests
