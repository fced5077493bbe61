// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NetlinkTarget.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "foundation/Log.h"
#include "platform/audio/CallbackThread.h"

namespace velmora {

namespace {

using Clock = std::chrono::steady_clock;

// The first change is told at once; after that a burst is waited out, this long from one telling to the next.
constexpr std::chrono::milliseconds kBetweenChanges{100};
constexpr std::chrono::seconds kBetweenLookUps{10};  // of a name that is not found

Descriptor openMessages() {
  Descriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  // Without an address of its own a socket gets no messages, subscribed or not.
  sockaddr_nl own{};
  own.nl_family = AF_NETLINK;
  if (socket.number() < 0 || ::bind(socket.number(), reinterpret_cast<sockaddr *>(&own), sizeof own) != 0)
    return {};
  for (const int group : {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE,
                          RTNLGRP_IPV6_ROUTE, RTNLGRP_IPV4_RULE, RTNLGRP_IPV6_RULE}) {
    if (::setsockopt(socket.number(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) != 0) {
      socket.close();
      break;
    }
  }
  return socket;
}

/// Takes what is there; whether it was anything, messages that did not fit included.
bool drain(int socket) {
  bool any = false;
  std::array<char, 16384> buffer{};
  for (;;) {
    const ssize_t length = ::recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (length < 0 && errno != ENOBUFS && errno != EINTR) return any;
    any = true;
  }
}

}  // namespace

struct NetlinkTarget::Watch {
  Callback callback;
  Descriptor messages;
  WakePipe wake;
  std::atomic<bool> stopped = false;
  std::atomic<bool> resolved = false;
  std::uint32_t last = 0;  // the flags that were told last; the watching thread's
};

NetlinkTarget::NetlinkTarget(const IpAddress &address) : m_address(address) {}
NetlinkTarget::NetlinkTarget(const std::string &name) : m_resolver(std::make_unique<NameResolver>(name)) {}
NetlinkTarget::~NetlinkTarget() { stop(); }

std::optional<std::uint32_t> NetlinkTarget::flags() const {
  RouteProbe probe;
  if (!m_resolver) return m_address.isAny() ? probe.internetFlags() : probe.flags(m_address);
  m_resolver->refreshIfStale();
  const auto addresses = m_resolver->addresses();
  if (!addresses) return {};
  for (const IpAddress &address : *addresses) {
    const auto result = probe.flags(address);
    if (!result || *result != 0) return result;
  }
  return 0;
}

bool NetlinkTarget::setCallback(Callback callback) {
  stop();
  m_watch.reset();
  if (!callback) return true;
  try {
    Descriptor messages = openMessages();
    if (messages.number() < 0) return false;
    auto fresh = std::make_shared<Watch>();
    fresh->messages = std::move(messages);
    fresh->callback = std::move(callback);
    m_watch = std::move(fresh);
    return true;
  } catch (const std::system_error &) {
    return false;
  }
}

bool NetlinkTarget::setDispatchQueue(CallbackThread *queue) {
  stop();
  if (!queue) return true;
  if (!m_watch) return false;
  m_watch->stopped = false;
  // Since the messages are subscribed to already, no change from here on is missed.
  m_watch->last = flags().value_or(0);
  if (m_resolver) {
    m_resolver->setNews([watch = m_watch] {
      watch->resolved = true;
      watch->wake.wake();
    });
    m_watch->resolved = true;  // it may have ended meanwhile
  }
  try {
    m_thread = std::thread([this, watch = m_watch, queue] { this->watch(*watch, *queue); });
    return true;
  } catch (const std::system_error &) {
    return false;
  }
}

void NetlinkTarget::stop() {
  if (m_resolver) m_resolver->setNews({});
  if (!m_thread.joinable()) return;
  m_watch->stopped = true;
  m_watch->wake.wake();
  m_thread.join();
}

void NetlinkTarget::watch(Watch &watch, CallbackThread &queue) const {
  ::pthread_setname_np(::pthread_self(), "reachability");
  bool pending = false;
  Clock::time_point earliest = Clock::now();
  while (!watch.stopped) {
    if (drain(watch.messages.number())) {
      pending = true;
      if (m_resolver) m_resolver->refresh();
    }
    if (watch.resolved.exchange(false)) pending = true;
    if (pending && Clock::now() >= earliest) {
      pending = false;
      const std::uint32_t now = flags().value_or(0);
      if (now != watch.last) {
        watch.last = now;
        earliest = Clock::now() + kBetweenChanges;
        queue.async([kept = m_watch, now] {
          if (!kept->stopped) kept->callback(now);
        });
      }
      continue;
    }

    using std::chrono::milliseconds;
    int timeout = -1;
    if (pending) {
      timeout = static_cast<int>(std::chrono::ceil<milliseconds>(earliest - Clock::now()).count());
    } else if (m_resolver && m_resolver->failed()) {
      timeout = static_cast<int>(milliseconds(kBetweenLookUps).count());
    }
    std::array<pollfd, 2> waited{{{.fd = watch.messages.number(), .events = POLLIN, .revents = 0},
                                  {.fd = watch.wake.descriptor(), .events = POLLIN, .revents = 0}}};
    const int ready = ::poll(waited.data(), waited.size(), pending ? std::max(timeout, 0) : timeout);
    if (waited[1].revents != 0) watch.wake.waitUntil(Clock::now());
    if (ready == 0 && !pending) m_resolver->refreshIfStale();
  }
}

namespace {

/// Where the system cannot be asked.
class UnreadableTarget final : public NetworkTarget {
 public:
  [[nodiscard]] std::optional<std::uint32_t> flags() const override { return {}; }
  bool setCallback(Callback callback) override { return !callback; }
  bool setDispatchQueue(CallbackThread *queue) override { return !queue; }
};

/// Whether the kernel speaks rtnetlink with this program at all; having no descriptor left may pass.
bool available() {
  const RouteProbe probe;
  if (probe.usable() || probe.error() == EMFILE || probe.error() == ENFILE) return true;
  log("Reachability error: ", std::generic_category().message(probe.error()));
  return false;
}

}  // namespace

std::unique_ptr<NetworkTarget> NetworkTarget::createWithName(const std::string &name) {
  if (name.empty()) return nullptr;
  if (!available()) return std::make_unique<UnreadableTarget>();
  return std::make_unique<NetlinkTarget>(name);
}

std::unique_ptr<NetworkTarget> NetworkTarget::createWithAddress(const sockaddr &address) {
  const auto target = IpAddress::from(address);
  if (!target) return nullptr;
  if (!available()) return std::make_unique<UnreadableTarget>();
  return std::make_unique<NetlinkTarget>(*target);
}

}  // namespace velmora
