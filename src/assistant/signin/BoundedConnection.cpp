// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/BoundedConnection.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace velmora {
namespace {

constexpr std::chrono::milliseconds kLinger{1000};
constexpr std::size_t kMostLingering = 16 * 1024 * 1024;

}  // namespace

BoundedConnection::BoundedConnection(int socket, int stopDescriptor, std::chrono::milliseconds limit,
                                     std::size_t mostBytes)
    : m_socket(socket),
      m_stopDescriptor(stopDescriptor),
      m_deadline(Clock::now() + limit),
      m_bytesLeft(mostBytes) {}

BoundedConnection::~BoundedConnection() { ::close(m_socket); }

bool BoundedConnection::wait(short events) const {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_deadline - Clock::now());
    std::array<pollfd, 2> waits{{{.fd = m_socket, .events = events, .revents = 0},
                                 {.fd = m_stopDescriptor, .events = POLLIN, .revents = 0}}};
    const int ready = ::poll(waits.data(), waits.size(), std::max(0, static_cast<int>(left.count())));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0 && waits[1].revents == 0;
  }
}

bool BoundedConnection::waitReadable() { return m_begin < m_end || wait(POLLIN); }

bool BoundedConnection::waitWritable() const { return wait(POLLOUT); }

std::ptrdiff_t BoundedConnection::read(char *bytes, std::size_t size) {
  if (m_begin == m_end) {
    const std::size_t most = std::min(m_buffer.size(), m_bytesLeft);
    if (most == 0 || !wait(POLLIN)) return -1;
    const ssize_t got = ::recv(m_socket, m_buffer.data(), most, MSG_DONTWAIT);
    if (got <= 0) return got;
    m_begin = 0;
    m_end = static_cast<std::size_t>(got);
    m_bytesLeft -= m_end;
  }
  const std::size_t count = std::min(size, m_end - m_begin);
  std::memcpy(bytes, m_buffer.data() + m_begin, count);
  m_begin += count;
  return static_cast<std::ptrdiff_t>(count);
}

std::ptrdiff_t BoundedConnection::write(const char *bytes, std::size_t size) const {
  return wait(POLLOUT) ? ::send(m_socket, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT) : -1;
}

void BoundedConnection::linger() {
  ::shutdown(m_socket, SHUT_WR);
  m_deadline = Clock::now() + kLinger;
  m_begin = m_end;
  m_bytesLeft = kMostLingering;
  std::array<char, 4096> ignored;
  while (read(ignored.data(), ignored.size()) > 0) {
  }
}

}  // namespace velmora
