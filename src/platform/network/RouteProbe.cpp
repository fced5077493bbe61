// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/network/RouteProbe.h"

#include <arpa/inet.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/network/NetworkTarget.h"

namespace velmora {

namespace {

// Addresses far apart that answer for the whole internet: name servers of the root zone. A policy or a bogus
// route may hide one of them.
constexpr std::array kInternet{"198.41.0.4",          "193.0.14.129", "202.12.27.33",
                               "2001:503:ba3e::2:30", "2001:7fd::1",  "2001:dc3::35"};

std::size_t lengthOf(const IpAddress &address) { return address.family == AF_INET ? 4 : 16; }

struct Request {
  nlmsghdr header;
  rtmsg route;
  std::array<char, 64> attributes;

  void add(unsigned short type, const void *data, std::size_t length) {
    rtattr attribute{.rta_len = static_cast<unsigned short>(RTA_LENGTH(length)), .rta_type = type};
    char *end = reinterpret_cast<char *>(this) + NLMSG_ALIGN(header.nlmsg_len);
    std::memcpy(end, &attribute, sizeof attribute);
    std::memcpy(end + RTA_LENGTH(0), data, length);
    header.nlmsg_len =
        static_cast<std::uint32_t>(NLMSG_ALIGN(header.nlmsg_len) + RTA_ALIGN(attribute.rta_len));
  }
};

}  // namespace

std::optional<IpAddress> IpAddress::from(const sockaddr &address) {
  IpAddress result{.family = address.sa_family};
  if (address.sa_family == AF_INET) {
    std::memcpy(result.bytes.data(), &reinterpret_cast<const sockaddr_in &>(address).sin_addr, 4);
  } else if (address.sa_family == AF_INET6) {
    const auto &wide = reinterpret_cast<const sockaddr_in6 &>(address);
    std::memcpy(result.bytes.data(), &wide.sin6_addr, 16);
    result.scope = wide.sin6_scope_id;
  } else {
    return {};
  }
  return result;
}

std::optional<IpAddress> IpAddress::parse(const char *text) {
  for (const int family : {AF_INET, AF_INET6}) {
    IpAddress result{.family = family};
    if (::inet_pton(family, text, result.bytes.data()) == 1) return result;
  }
  return {};
}

bool IpAddress::isLinkLocal() const {
  return family == AF_INET ? bytes[0] == 169 && bytes[1] == 254
                           : bytes[0] == 0xfe && (bytes[1] & 0xc0) == 0x80;
}

RouteProbe::RouteProbe() : m_socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)) {
  if (!usable()) m_error = errno;
}

bool RouteProbe::ask(const IpAddress &address, std::optional<Route> &answer) {
  Request request{};
  request.header = {.nlmsg_len = NLMSG_LENGTH(sizeof(rtmsg)),
                    .nlmsg_type = RTM_GETROUTE,
                    .nlmsg_flags = NLM_F_REQUEST,
                    .nlmsg_seq = ++m_sequence,
                    .nlmsg_pid = 0};
  request.route.rtm_family = static_cast<unsigned char>(address.family);
  request.route.rtm_dst_len = static_cast<unsigned char>(lengthOf(address) * 8);
  request.add(RTA_DST, address.bytes.data(), lengthOf(address));
  if (address.scope != 0) request.add(RTA_OIF, &address.scope, sizeof address.scope);
  if (::send(m_socket.number(), &request, request.header.nlmsg_len, 0) < 0) return false;

  // The kernel has put the answer there before `send` returns.
  alignas(nlmsghdr) std::array<char, 8192> buffer{};
  for (;;) {
    const ssize_t length = ::recv(m_socket.number(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length < 0 && errno == EINTR) continue;
    if (length <= 0) return false;
    auto left = static_cast<unsigned>(length);
    for (auto *header = reinterpret_cast<nlmsghdr *>(buffer.data()); NLMSG_OK(header, left);
         header = NLMSG_NEXT(header, left)) {
      if (header->nlmsg_seq != m_sequence) continue;
      answer.reset();
      // Unreachable, prohibited, a family that the kernel has not got: each is no way.
      if (header->nlmsg_type == NLMSG_ERROR) return true;
      if (header->nlmsg_type != RTM_NEWROUTE) return false;
      const auto *route = static_cast<const rtmsg *>(NLMSG_DATA(header));
      Route found{.type = route->rtm_type};
      auto rest = static_cast<unsigned>(RTM_PAYLOAD(header));
      for (const rtattr *attribute = RTM_RTA(route); RTA_OK(attribute, rest);
           attribute = RTA_NEXT(attribute, rest)) {
        if (attribute->rta_type == RTA_GATEWAY || attribute->rta_type == RTA_VIA) found.gateway = true;
        if (attribute->rta_type == RTA_OIF) std::memcpy(&found.interface, RTA_DATA(attribute), sizeof(int));
      }
      answer = found;
      return true;
    }
  }
}

short RouteProbe::interfaceFlags(int index) const {
  // Unlike a question over netlink these do not wait for whoever is changing an interface just now.
  ifreq request{};
  request.ifr_ifindex = index;
  if (::ioctl(m_socket.number(), SIOCGIFNAME, &request) != 0) return 0;
  if (::ioctl(m_socket.number(), SIOCGIFFLAGS, &request) != 0) return 0;
  return request.ifr_flags;
}

std::optional<std::uint32_t> RouteProbe::flags(const IpAddress &address) {
  using enum network_flag::Flag;
  std::optional<Route> route;
  if (!usable() || !ask(address, route)) return {};
  constexpr std::array kNoWay{RTN_BLACKHOLE, RTN_UNREACHABLE, RTN_PROHIBIT, RTN_THROW};
  if (!route || std::find(kNoWay.begin(), kNoWay.end(), route->type) != kNoWay.end()) return 0;
  // A gateway does not pass link-local packets on, though the default route would take them.
  if (address.isLinkLocal() && route->gateway) return 0;
  // Without a carrier the route stays.
  const short interface = interfaceFlags(route->interface);
  if ((interface & IFF_UP) == 0 || (interface & IFF_RUNNING) == 0) return 0;

  std::uint32_t result = kReachable;
  if (!route->gateway) result |= kIsDirect;
  if (route->type == RTN_LOCAL) result |= kIsLocalAddress;
  if (interface & IFF_POINTOPOINT) result |= kTransientConnection;
  return result;
}

std::optional<std::uint32_t> RouteProbe::internetFlags() {
  for (const char *text : kInternet) {
    const std::optional<std::uint32_t> result = flags(*IpAddress::parse(text));
    if (!result || *result != 0) return result;
  }
  return 0;
}

}  // namespace velmora
