// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/Reachability.h"

#include <netinet/in.h>

#include <QCoreApplication>
#include <QVariant>

#include "foundation/MainQueue.h"
#include "foundation/NotificationCenter.h"

namespace velmora {

namespace {

using enum network_flag::Flag;

constexpr std::uint32_t kLinkLocalNetwork = 0xa9fe0000;  // 169.254.0.0

std::shared_ptr<Reachability> monitorOf(std::unique_ptr<NetworkTarget> target) {
  return target ? std::make_shared<Reachability>(std::move(target)) : nullptr;
}

std::shared_ptr<Reachability> monitorOfIPv4(std::uint32_t address) {
  sockaddr_in socketAddress{};
  socketAddress.sin_family = AF_INET;
  socketAddress.sin_addr.s_addr = htonl(address);
  return Reachability::reachabilityWithAddress(reinterpret_cast<const sockaddr &>(socketAddress));
}

}  // namespace

std::shared_ptr<Reachability> Reachability::reachabilityWithHostName(const std::string &name) {
  return reachabilityWithHostname(name);
}

std::shared_ptr<Reachability> Reachability::reachabilityWithHostname(const std::string &name) {
  return monitorOf(NetworkTarget::createWithName(name));
}

std::shared_ptr<Reachability> Reachability::reachabilityWithAddress(const sockaddr &address) {
  return monitorOf(NetworkTarget::createWithAddress(address));
}

std::shared_ptr<Reachability> Reachability::reachabilityForInternetConnection() {
  return monitorOfIPv4(INADDR_ANY);
}

std::shared_ptr<Reachability> Reachability::reachabilityForLocalWiFi() {
  return monitorOfIPv4(kLinkLocalNetwork);
}

Reachability::Reachability(std::unique_ptr<NetworkTarget> reachabilityRef)
    : m_reachabilityRef(std::move(reachabilityRef)) {}

Reachability::~Reachability() {
  m_reachabilityRef->setDispatchQueue(nullptr);
  m_reachabilityRef->setCallback({});
}

void Reachability::setReachableBlock(Block block) {
  const std::lock_guard lock(m_mutex);
  m_reachableBlock = std::move(block);
}

void Reachability::setUnreachableBlock(Block block) {
  const std::lock_guard lock(m_mutex);
  m_unreachableBlock = std::move(block);
}

void Reachability::setReachabilityBlock(FlagsBlock block) {
  const std::lock_guard lock(m_mutex);
  m_reachabilityBlock = std::move(block);
}

bool Reachability::startNotifier() {
  if (m_reachabilityObject) return true;
  const auto changed = [monitor = weak_from_this()](std::uint32_t flags) {
    // The monitor stays while its blocks run, even when one of them stops it.
    if (const auto kept = monitor.lock()) kept->reachabilityChanged(flags);
  };
  if (!m_reachabilityRef->setCallback(changed)) return false;
  if (!m_reachabilityRef->setDispatchQueue(&m_reachabilitySerialQueue)) {
    m_reachabilityRef->setCallback({});
    return false;
  }
  m_reachabilityObject = shared_from_this();
  return true;
}

void Reachability::stopNotifier() {
  m_reachabilityRef->setDispatchQueue(nullptr);
  m_reachabilityRef->setCallback({});
  // Perhaps the last to hold it: nothing of the monitor is touched after this.
  const auto kept = std::move(m_reachabilityObject);
}

void Reachability::reachabilityChanged(std::uint32_t flags) {
  const auto [reachability, anyChange] = [&] {
    const std::lock_guard lock(m_mutex);
    return std::pair(isReachableWithFlags(flags) ? m_reachableBlock : m_unreachableBlock,
                     m_reachabilityBlock);
  }();
  if (reachability) reachability(*this);
  if (anyChange) anyChange(*this, flags);
  MainQueue::main().async([monitor = shared_from_this()] {
    NotificationCenter::defaultCenter().post(QString::fromUtf16(kReachabilityChangedNotification),
                                             QVariant::fromValue(monitor.get()));
  });
}

bool Reachability::isReachableWithFlags(std::uint32_t flags) {
  constexpr std::uint32_t kToBeMade = kTransientConnection | kConnectionRequired;
  return (flags & kReachable) != 0 && (flags & kToBeMade) != kToBeMade;
}

bool Reachability::isReachable() const { return isReachableWithFlags(reachabilityFlags()); }

bool Reachability::isReachableViaWWAN() const { return false; }

bool Reachability::isReachableViaWiFi() const { return (reachabilityFlags() & kReachable) != 0; }

bool Reachability::isConnectionRequired() const { return connectionRequired(); }

bool Reachability::connectionRequired() const { return (reachabilityFlags() & kConnectionRequired) != 0; }

bool Reachability::isConnectionOnDemand() const {
  const std::uint32_t flags = reachabilityFlags();
  return (flags & kConnectionRequired) != 0 && (flags & (kConnectionOnTraffic | kConnectionOnDemand)) != 0;
}

bool Reachability::isInterventionRequired() const {
  constexpr std::uint32_t kBoth = kConnectionRequired | kInterventionRequired;
  return (reachabilityFlags() & kBoth) == kBoth;
}

NetworkStatus Reachability::currentReachabilityStatus() const {
  return isReachable() && isReachableViaWiFi() ? NetworkStatus::ReachableViaWiFi
                                               : NetworkStatus::NotReachable;
}

std::uint32_t Reachability::reachabilityFlags() const { return m_reachabilityRef->flags().value_or(0); }

QString Reachability::currentReachabilityString() const {
  switch (currentReachabilityStatus()) {
    case NetworkStatus::ReachableViaWiFi: return QCoreApplication::translate("Localizable", "WiFi");
    case NetworkStatus::ReachableViaWWAN: return QCoreApplication::translate("Localizable", "Cellular");
    case NetworkStatus::NotReachable: break;
  }
  return QCoreApplication::translate("Localizable", "No Connection");
}

QString Reachability::currentReachabilityFlags() const {
  struct Letter {
    std::uint32_t flag;
    char16_t letter;
  };
  static constexpr Letter kLetters[] = {{kReachable, u'R'},           {kConnectionRequired, u'c'},
                                        {kTransientConnection, u't'}, {kInterventionRequired, u'i'},
                                        {kConnectionOnTraffic, u'C'}, {kConnectionOnDemand, u'D'},
                                        {kIsLocalAddress, u'l'},      {kIsDirect, u'd'}};
  const std::uint32_t flags = reachabilityFlags();
  QString text = QStringLiteral("X");
  for (const Letter &each : kLetters) {
    text += (flags & each.flag) != 0 ? QChar(each.letter) : QChar(u'-');
    if (each.flag == kReachable) text += QChar(u' ');
  }
  return text;
}

QString Reachability::description() const {
  return QStringLiteral("<Reachability: 0x%1 (%2)>")
      .arg(reinterpret_cast<quintptr>(this), 0, 16)
      .arg(currentReachabilityFlags());
}

}  // namespace velmora
