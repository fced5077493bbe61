// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "support/Waiting.h"

namespace velmora::tests {

/// A connection to 127.0.0.1 on which exactly the bytes go that a test wants.
class RawConnection {
 public:
  explicit RawConnection(int port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval patience{.tv_sec = kPatience.count(), .tv_usec = 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (::connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
      ::close(m_socket);
      throw std::runtime_error("nobody listens");
    }
  }
  ~RawConnection() { ::close(m_socket); }
  RawConnection(const RawConnection &) = delete;
  RawConnection &operator=(const RawConnection &) = delete;

  /// False when the other side has closed.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  /// Everything up to the end of the connection.
  [[nodiscard]] std::string receive() const {
    std::string all;
    char bytes[4096];
    for (ssize_t got = 0; (got = ::recv(m_socket, bytes, sizeof bytes, 0)) > 0;) {
      all.append(bytes, static_cast<std::size_t>(got));
    }
    return all;
  }

 private:
  int m_socket;
};

/// An answer, taken apart.
struct Answer {
  int status = 0;
  std::string head;
  std::string body;

  explicit Answer(const std::string &bytes) {
    const std::size_t end = bytes.find("\r\n\r\n");
    if (!bytes.starts_with("HTTP/1.1 ") || end == std::string::npos) return;
    status = std::stoi(bytes.substr(9, 3));
    head = bytes.substr(0, end + 2);
    body = bytes.substr(end + 4);
  }
  /// The field of this name; empty when there is none.
  [[nodiscard]] std::string field(const std::string &name) const {
    const std::size_t at = head.find("\r\n" + name + ": ");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + name.size() + 4;
    return head.substr(begin, head.find("\r\n", begin) - begin);
  }
};

inline Answer sendRaw(int port, const std::string &bytes) {
  const RawConnection connection(port);
  connection.send(bytes);
  return Answer(connection.receive());
}

inline std::string hostField(int port) { return "Host: 127.0.0.1:" + std::to_string(port) + "\r\n"; }

inline Answer get(int port, const std::string &target, const std::string &fields = {}) {
  return sendRaw(port, "GET " + target + " HTTP/1.1\r\n" + hostField(port) + fields + "\r\n");
}

/// A form's POST; `fields` are further lines of the head.
inline Answer post(int port, const std::string &target, const std::string &form,
                   const std::string &fields = {}) {
  return sendRaw(port, "POST " + target + " HTTP/1.1\r\n" + hostField(port) +
                           "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                           std::to_string(form.size()) + "\r\n" + fields + "\r\n" + form);
}

}  // namespace velmora::tests
