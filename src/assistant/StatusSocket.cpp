// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/StatusSocket.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <array>
#include <cstring>
#include <stdexcept>

namespace velmora {
namespace {

std::optional<sockaddr_un> addressIn(const std::filesystem::path &folder) {
  sockaddr_un address{};
  const std::string path = (folder / "status").string();
  if (path.size() >= sizeof address.sun_path) return std::nullopt;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

}  // namespace

StatusSocket::StatusSocket(const std::filesystem::path &folder)
    : m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  const auto address = addressIn(folder);
  const int number = m_listener.number();
  if (!address || number < 0 ||
      ::bind(number, reinterpret_cast<const sockaddr *>(&*address), sizeof *address) != 0 ||
      ::listen(number, 8) != 0) {
    throw std::runtime_error("cannot listen in " + folder.string());
  }
}

void StatusSocket::answer(const std::string &text) const {
  const Descriptor caller(::accept4(descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  // It fits into the socket's buffer; a caller that is gone already gets nothing.
  [[maybe_unused]] const auto sent = ::send(caller.number(), text.data(), text.size(), MSG_NOSIGNAL);
}

std::optional<std::string> StatusSocket::ask(const std::filesystem::path &folder) {
  const auto address = addressIn(folder);
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const timeval patience{.tv_sec = 1, .tv_usec = 0};
  ::setsockopt(socket.number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  if (!address ||
      ::connect(socket.number(), reinterpret_cast<const sockaddr *>(&*address), sizeof *address) != 0)
    return std::nullopt;
  std::string text;
  std::array<char, 4096> piece;
  for (;;) {
    const auto count = ::recv(socket.number(), piece.data(), piece.size(), 0);
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    text.append(piece.data(), static_cast<std::size_t>(count));
  }
  return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace velmora
