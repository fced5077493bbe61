// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Somewhere on the network, and whether the machine would know a way there. No packet is ever sent to it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

struct sockaddr;

namespace velmora {

class CallbackThread;

/// What `NetworkTarget` tells of the way to a target.
namespace network_flag {
enum Flag : std::uint32_t {
  kTransientConnection = 0x1,  ///< over a point-to-point link
  kReachable = 0x2,            ///< a route, over a link that carries
  kConnectionRequired = 0x4,
  kConnectionOnTraffic = 0x8,
  kInterventionRequired = 0x10,
  kConnectionOnDemand = 0x20,
  kIsLocalAddress = 0x10000,  ///< an address of this machine
  kIsDirect = 0x20000,        ///< without a gateway
};
}  // namespace network_flag

/// A target whose reachability can be asked for and watched. The backend is the system's; where it has none,
/// a target whose flags cannot be read and that cannot be watched takes its place.
class NetworkTarget {
 public:
  using Callback = std::function<void(std::uint32_t flags)>;

  virtual ~NetworkTarget() = default;
  NetworkTarget(const NetworkTarget &) = delete;
  NetworkTarget &operator=(const NetworkTarget &) = delete;

  /// A host by its name or its address as text. The name is looked up in the background, again when the
  /// network changes. Null for an empty name.
  [[nodiscard]] static std::unique_ptr<NetworkTarget> createWithName(const std::string &name);
  /// An IPv4 or IPv6 address; null for another family. The "any" address of either family stands for the
  /// internet at large, over either family.
  [[nodiscard]] static std::unique_ptr<NetworkTarget> createWithAddress(const sockaddr &address);

  /// The flags of this moment, read without waiting; nothing when they cannot be read, such as those of a
  /// name that has not been looked up yet. Any thread.
  [[nodiscard]] virtual std::optional<std::uint32_t> flags() const = 0;

  /// Sets who is told of changes; an empty callback ends it. False when the system does not let itself be
  /// watched. This and `setDispatchQueue` come from one thread at a time.
  virtual bool setCallback(Callback callback) = 0;
  /// From now on changes are told on `queue`, which outlives that; null stops it, and no call begins after
  /// that but one that is beginning at this moment. A burst of changes is told a few times only, and its last
  /// state always. False when it cannot begin.
  virtual bool setDispatchQueue(CallbackThread *queue) = 0;

 protected:
  NetworkTarget() = default;
};

}  // namespace velmora
