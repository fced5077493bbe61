// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/Relay.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace velmora::tests {
namespace {

constexpr int kTickMs = 5;  // how soon a change of mode is noticed

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

void resetAndClose(int socket) {
  const linger hard{.l_onoff = 1, .l_linger = 0};
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
  ::close(socket);
}

/// Moves what is there; false at the end of the connection.
bool pass(int from, int to) {
  std::array<char, 65536> buffer;
  const ssize_t got = ::recv(from, buffer.data(), buffer.size(), 0);
  if (got <= 0) return false;
  for (ssize_t done = 0; done < got;) {
    const ssize_t sent = ::send(to, buffer.data() + done, static_cast<std::size_t>(got - done), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    done += sent;
  }
  return true;
}

}  // namespace

Relay::Relay(int serverPort) : m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  if (::bind(m_listener, reinterpret_cast<sockaddr *>(&address), size) != 0 || ::listen(m_listener, 4) != 0 ||
      ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
    throw std::runtime_error("the relay cannot listen");
  }
  m_port = ntohs(address.sin_port);
  m_thread = std::thread([this, serverPort] { run(serverPort); });
}

Relay::~Relay() {
  m_mode = Mode::closing;
  m_thread.join();
  ::close(m_listener);
}

void Relay::run(int serverPort) {
  pollfd incoming{.fd = m_listener, .events = POLLIN, .revents = 0};
  while (::poll(&incoming, 1, kTickMs) == 0) {
    if (m_mode == Mode::closing) return;
  }
  const int client = ::accept(m_listener, nullptr, nullptr);
  const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_in address = loopback(serverPort);
  bool open = ::connect(server, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
  while (open && m_mode != Mode::closing && m_mode != Mode::reset) {
    std::array<pollfd, 2> both{
        {{.fd = client, .events = POLLIN, .revents = 0}, {.fd = server, .events = POLLIN, .revents = 0}}};
    if (m_mode == Mode::frozen) {
      std::this_thread::sleep_for(std::chrono::milliseconds(kTickMs));
      continue;
    }
    if (::poll(both.data(), both.size(), kTickMs) <= 0) continue;
    if (both[0].revents != 0) open = pass(client, server);
    if (open && both[1].revents != 0) open = pass(server, client);
  }
  resetAndClose(client);
  resetAndClose(server);
}

}  // namespace velmora::tests
