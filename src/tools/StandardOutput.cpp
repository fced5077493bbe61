// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/StandardOutput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace velmora {

void writeAll(int descriptor, std::string_view text, const std::function<bool()> &interrupted) {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
      continue;
    }
    const int error = errno;
    if (interrupted()) throw std::runtime_error("interrupted");
    if (error == EAGAIN) {
      pollfd watched{.fd = descriptor, .events = POLLOUT, .revents = 0};
      // Looks again after a second: a signal may have come just before the wait.
      ::poll(&watched, 1, 1000);
    } else if (error != EINTR) {
      throw std::system_error(error, std::generic_category(), "standard output cannot be written to");
    }
  }
}

}  // namespace velmora
