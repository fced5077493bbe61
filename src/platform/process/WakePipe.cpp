// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/process/WakePipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace velmora {

WakePipe::WakePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  m_reader = ends[0];
  m_writer = ends[1];
}

WakePipe::~WakePipe() {
  ::close(m_reader);
  ::close(m_writer);
}

void WakePipe::wake() const noexcept {
  const int before = errno;
  const char byte = 0;
  // A full pipe already wakes.
  [[maybe_unused]] const ssize_t ignored = ::write(m_writer, &byte, 1);
  errno = before;
}

void WakePipe::waitUntil(std::optional<Clock::time_point> deadline) const {
  pollfd watched{.fd = m_reader, .events = POLLIN, .revents = 0};
  timespec left{};
  if (deadline) {
    const auto rest = std::max(Clock::duration::zero(), *deadline - Clock::now());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(rest);
    left.tv_sec = seconds.count();
    left.tv_nsec = std::chrono::nanoseconds(rest - seconds).count();
  }
  // An interrupted wait returns early: the caller looks what has changed anyway.
  ::ppoll(&watched, 1, deadline ? &left : nullptr, nullptr);
  std::array<char, 64> bytes{};
  while (::read(m_reader, bytes.data(), bytes.size()) > 0) {
  }
}

}  // namespace velmora
