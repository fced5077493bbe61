// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// One connection of the sign-in's HTTP listener.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>

namespace velmora {

/// Reads and writes a socket that it closes at its end, within one time limit for everything and a limit on
/// what is read. Belongs to one thread.
class BoundedConnection {
 public:
  using Clock = std::chrono::steady_clock;

  /// Owns `socket`. Every wait ends when `stopDescriptor` becomes readable.
  BoundedConnection(int socket, int stopDescriptor, std::chrono::milliseconds limit, std::size_t mostBytes);
  ~BoundedConnection();
  BoundedConnection(const BoundedConnection &) = delete;
  BoundedConnection &operator=(const BoundedConnection &) = delete;

  [[nodiscard]] int socket() const { return m_socket; }
  /// Waits until a byte is there or the other side has closed; false when a limit is reached.
  [[nodiscard]] bool waitReadable();
  [[nodiscard]] bool waitWritable() const;
  /// As recv and send do, with -1 for a limit as well.
  [[nodiscard]] std::ptrdiff_t read(char *bytes, std::size_t size);
  [[nodiscard]] std::ptrdiff_t write(const char *bytes, std::size_t size) const;

  /// Takes what the other side still sends, for a moment and without keeping it: to close upon it would take
  /// the answer away from it.
  void linger();

 private:
  [[nodiscard]] bool wait(short events) const;

  const int m_socket;
  const int m_stopDescriptor;
  Clock::time_point m_deadline;
  std::size_t m_bytesLeft;
  std::array<char, 4096> m_buffer;
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
};

}  // namespace velmora
