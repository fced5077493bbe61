// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Asks the kernel over rtnetlink which way a packet would take.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "foundation/Descriptor.h"

struct sockaddr;

namespace velmora {

/// An IPv4 or IPv6 address.
struct IpAddress {
  int family = 0;                        ///< AF_INET or AF_INET6
  std::array<std::uint8_t, 16> bytes{};  ///< in network order; IPv4 uses the first four
  std::uint32_t scope = 0;               ///< the interface of a link-local IPv6 address, or 0

  [[nodiscard]] static std::optional<IpAddress> from(const sockaddr &address);
  [[nodiscard]] static std::optional<IpAddress> parse(const char *text);

  [[nodiscard]] bool isAny() const { return bytes == std::array<std::uint8_t, 16>{}; }
  [[nodiscard]] bool isLinkLocal() const;
};

/// One conversation with the kernel; one thread at a time. Takes microseconds and never waits.
class RouteProbe {
 public:
  /// Opens the socket; `usable()` is false and `error()` the reason when the system refuses it.
  RouteProbe();

  [[nodiscard]] bool usable() const { return m_socket.number() >= 0; }
  [[nodiscard]] int error() const { return m_error; }

  /// The flags of the way to `address`, 0 when there is none; nothing when the kernel does not answer.
  [[nodiscard]] std::optional<std::uint32_t> flags(const IpAddress &address);
  /// Those of the way to the internet at large.
  [[nodiscard]] std::optional<std::uint32_t> internetFlags();

 private:
  struct Route {
    std::uint8_t type = 0;
    bool gateway = false;
    int interface = 0;
  };

  [[nodiscard]] bool ask(const IpAddress &address, std::optional<Route> &answer);
  [[nodiscard]] short interfaceFlags(int index) const;

  Descriptor m_socket;
  int m_error = 0;
  std::uint32_t m_sequence = 0;
};

}  // namespace velmora
