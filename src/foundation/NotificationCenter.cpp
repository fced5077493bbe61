// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/NotificationCenter.h"

#include <utility>
#include <vector>

namespace velmora {

NotificationCenter &NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

NotificationCenter::Observation NotificationCenter::addObserver(const QString &name, Observer observer,
                                                                const QVariant &object) {
  auto watch = std::make_shared<Watch>(Watch{name, object, std::move(observer)});
  m_watches.push_back(watch);
  return Observation(std::move(watch));
}

void NotificationCenter::post(const QString &name, const QVariant &object) {
  m_watches.remove_if([](const std::weak_ptr<Watch> &watch) { return watch.expired(); });
  const std::vector<std::weak_ptr<Watch>> present(m_watches.begin(), m_watches.end());
  const Notification notification{name, object};
  for (const auto &weak : present) {
    const auto watch = weak.lock();
    if (!watch || watch->name != name) continue;
    if (!watch->object.isValid() || watch->object == object) watch->observer(notification);
  }
}

}  // namespace velmora
