// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Where a service listens.
struct Endpoint {
  std::string host;                   ///< name or IP literal, IPv6 without brackets
  std::optional<std::uint16_t> port;  ///< absent: the default TLS port

  /// Reads "host", "host:443", "::1", "[::1]" or "[::1]:443"; nothing when it is none of these.
  [[nodiscard]] static std::optional<Endpoint> parse(std::string_view text);

  /// "host" or "host:port", with IPv6 in brackets where a port follows.
  [[nodiscard]] std::string address() const;

  /// True when the host is an IP literal and not a name.
  [[nodiscard]] bool isLiteral() const;

  /// True when the host names this machine without asking anyone: localhost, 127.0.0.0/8 and ::1.
  [[nodiscard]] bool isLoopback() const;

  bool operator==(const Endpoint &) const = default;
};

}  // namespace velmora
