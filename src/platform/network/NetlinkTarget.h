// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <thread>

#include "platform/network/NameResolver.h"
#include "platform/network/NetworkTarget.h"
#include "platform/process/WakePipe.h"

namespace velmora {

/// The backend over rtnetlink. A change of the network says only that something has changed: the flags are
/// worked out anew each time, since routes also go without a message when an address or a link goes.
class NetlinkTarget final : public NetworkTarget {
 public:
  explicit NetlinkTarget(const IpAddress &address);
  explicit NetlinkTarget(const std::string &name);
  ~NetlinkTarget() override;

  [[nodiscard]] std::optional<std::uint32_t> flags() const override;
  bool setCallback(Callback callback) override;
  bool setDispatchQueue(CallbackThread *queue) override;

 private:
  struct Watch;

  void watch(Watch &watch, CallbackThread &queue) const;
  void stop();

  const IpAddress m_address{};
  const std::unique_ptr<NameResolver> m_resolver;  // null for an address
  std::shared_ptr<Watch> m_watch;                  // while there is a callback
  std::thread m_thread;                            // while there is a queue
};

}  // namespace velmora
