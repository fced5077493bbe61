// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether the network can be reached. On a desktop any way counts as WiFi, and none as a cellular one.
//
//   auto reach = Reachability::reachabilityForInternetConnection();
//   reach->setUnreachableBlock([](Reachability &) { … });
//   reach->startNotifier();
#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/audio/CallbackThread.h"
#include "platform/network/NetworkTarget.h"

namespace velmora {

/// Posted on the main thread with the monitor (a `Reachability *`) as its object.
inline constexpr char16_t kReachabilityChangedNotification[] = u"kReachabilityChangedNotification";

/// The values of `Reachability::currentReachabilityStatus()`.
enum class NetworkStatus { NotReachable = 0, ReachableViaWWAN = 1, ReachableViaWiFi = 2 };

/// Watches one target. The queries may come from any thread and answer at once; the notifier is started and
/// stopped by one thread at a time, and keeps the monitor alive while it runs.
class Reachability : public std::enable_shared_from_this<Reachability> {
 public:
  using Block = std::function<void(Reachability &)>;
  using FlagsBlock = std::function<void(Reachability &, std::uint32_t flags)>;

  /// Null when there can be no such target.
  [[nodiscard]] static std::shared_ptr<Reachability> reachabilityWithHostName(const std::string &name);
  [[nodiscard]] static std::shared_ptr<Reachability> reachabilityWithHostname(const std::string &name);
  [[nodiscard]] static std::shared_ptr<Reachability> reachabilityWithAddress(const sockaddr &address);
  [[nodiscard]] static std::shared_ptr<Reachability> reachabilityForInternetConnection();
  [[nodiscard]] static std::shared_ptr<Reachability> reachabilityForLocalWiFi();

  /// For `std::make_shared`; the target is not null.
  explicit Reachability(std::unique_ptr<NetworkTarget> reachabilityRef);
  ~Reachability();
  Reachability(const Reachability &) = delete;
  Reachability &operator=(const Reachability &) = delete;

  /// Called on a thread of the monitor's at each change: that it can be reached, that it cannot, and either.
  /// Any thread may set them.
  void setReachableBlock(Block block);
  void setUnreachableBlock(Block block);
  void setReachabilityBlock(FlagsBlock block);

  /// Kept, and consulted by nothing. Main thread.
  [[nodiscard]] bool reachableOnWWAN() const { return m_reachableOnWWAN; }
  void setReachableOnWWAN(bool reachable) { m_reachableOnWWAN = reachable; }

  /// True when the notifier runs, from this call or from before.
  bool startNotifier();
  /// After it no block begins, but one that is beginning at this moment on the other thread.
  void stopNotifier();

  /// Reachable, and not by a connection that would have to be made first.
  [[nodiscard]] static bool isReachableWithFlags(std::uint32_t flags);
  [[nodiscard]] bool isReachable() const;
  [[nodiscard]] bool isReachableViaWWAN() const;
  [[nodiscard]] bool isReachableViaWiFi() const;
  [[nodiscard]] bool isConnectionRequired() const;
  [[nodiscard]] bool connectionRequired() const;
  [[nodiscard]] bool isConnectionOnDemand() const;
  [[nodiscard]] bool isInterventionRequired() const;
  [[nodiscard]] NetworkStatus currentReachabilityStatus() const;
  /// The flags of this moment; 0 when they cannot be read.
  [[nodiscard]] std::uint32_t reachabilityFlags() const;

  /// The status for people, translated.
  [[nodiscard]] QString currentReachabilityString() const;
  /// The flags as letters and dashes, for logs.
  [[nodiscard]] QString currentReachabilityFlags() const;
  [[nodiscard]] QString description() const;

 private:
  void reachabilityChanged(std::uint32_t flags);

  const std::unique_ptr<NetworkTarget> m_reachabilityRef;
  bool m_reachableOnWWAN = true;
  std::shared_ptr<Reachability> m_reachabilityObject;  // this monitor, while the notifier runs
  std::mutex m_mutex;
  Block m_reachableBlock;  // this and below guarded by m_mutex
  Block m_unreachableBlock;
  FlagsBlock m_reachabilityBlock;
  CallbackThread m_reachabilitySerialQueue{"reachable"};  // the last one: its work uses the rest
};

}  // namespace velmora
