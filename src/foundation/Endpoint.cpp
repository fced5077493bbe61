// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Endpoint.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace velmora {
namespace {

constexpr std::size_t kLongestName = 253;  // of the domain name system

bool isAddress(int family, const std::string &text) {
  in6_addr address{};  // large enough for both families
  return ::inet_pton(family, text.c_str(), &address) == 1;
}

bool isName(std::string_view text) {
  const auto allowed = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_';
  };
  return !text.empty() && text.size() <= kLongestName && text.front() != '-' && text.front() != '.' &&
         std::all_of(text.begin(), text.end(), allowed);
}

std::optional<std::uint16_t> portOf(std::string_view text) {
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc() || end != text.data() + text.size() || port == 0) return std::nullopt;
  return port;
}

}  // namespace

std::optional<Endpoint> Endpoint::parse(std::string_view text) {
  Endpoint endpoint;
  std::string_view rest;  // from the colon of the port on
  if (text.starts_with('[')) {
    const std::size_t end = text.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    endpoint.host = text.substr(1, end - 1);
    rest = text.substr(end + 1);
    if (!isAddress(AF_INET6, endpoint.host)) return std::nullopt;
  } else if (std::count(text.begin(), text.end(), ':') > 1) {
    endpoint.host = text;
    if (!isAddress(AF_INET6, endpoint.host)) return std::nullopt;
  } else {
    const std::size_t colon = std::min(text.find(':'), text.size());
    endpoint.host = text.substr(0, colon);
    rest = text.substr(colon);
    if (!isName(endpoint.host)) return std::nullopt;
  }
  if (rest.empty()) return endpoint;
  if (rest.front() != ':') return std::nullopt;
  endpoint.port = portOf(rest.substr(1));
  if (!endpoint.port) return std::nullopt;
  return endpoint;
}

std::string Endpoint::address() const {
  if (!port) return host;
  const bool bareIPv6 = host.find(':') != std::string::npos && host.front() != '[';
  return (bareIPv6 ? '[' + host + ']' : host) + ':' + std::to_string(*port);
}

bool Endpoint::isLiteral() const { return isAddress(AF_INET, host) || isAddress(AF_INET6, host); }

bool Endpoint::isLoopback() const {
  return host == "localhost" || host == "::1" || (host.starts_with("127.") && isAddress(AF_INET, host));
}

}  // namespace velmora
