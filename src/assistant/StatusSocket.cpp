// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/StatusSocket.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace velmora {
namespace {

constexpr std::size_t kLongestAnswer = 4096;  // bytes, many times what is told

std::optional<sockaddr_un> addressIn(const std::filesystem::path &folder) {
  sockaddr_un address{};
  const std::string path = (folder / "status").string();
  if (path.size() >= sizeof address.sun_path) return std::nullopt;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  return address;
}

/// The first line of `text`, with nothing in it that a terminal would obey.
std::string plainLine(std::string_view text) {
  std::string line(text.substr(0, text.find('\n')));
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return line;
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

bool StatusSocket::answer(const std::string &text) const {
  const Descriptor caller(::accept4(descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (caller.number() < 0) return false;
  // It fits into the socket's buffer; a caller that is gone already gets nothing.
  [[maybe_unused]] const auto sent = ::send(caller.number(), text.data(), text.size(), MSG_NOSIGNAL);
  return true;
}

std::optional<std::string> StatusSocket::ask(const std::filesystem::path &folder) {
  const auto address = addressIn(folder);
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const timeval patience{.tv_sec = 1, .tv_usec = 0};
  // Without that of sending, connecting waits for ever where many wait already.
  if (!address || ::setsockopt(socket.number(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience) != 0 ||
      ::setsockopt(socket.number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience) != 0 ||
      ::connect(socket.number(), reinterpret_cast<const sockaddr *>(&*address), sizeof *address) != 0)
    return std::nullopt;
  std::string text;
  std::array<char, kLongestAnswer> piece;
  while (text.size() < kLongestAnswer) {
    const auto count = ::recv(socket.number(), piece.data(), kLongestAnswer - text.size(), 0);
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    text.append(piece.data(), static_cast<std::size_t>(count));
  }
  text = plainLine(text);
  return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace velmora
