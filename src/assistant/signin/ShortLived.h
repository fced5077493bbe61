// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "assistant/signin/Secret.h"

namespace velmora {

/// The time that sign-ins are measured by: it must go on across restarts.
using SignInClock = std::function<std::chrono::system_clock::time_point()>;

/// Values that are each handed out against a secret of their own, for a short time. Belongs to one thread, or
/// under its owner's mutex.
template <typename Value>
class ShortLived {
 public:
  /// Holds at most `most` values, the newest ones.
  ShortLived(std::size_t most, std::chrono::seconds life) : m_most(most), m_life(life) {}

  /// Keeps `value` and returns the secret for it.
  [[nodiscard]] std::string add(Value value, std::chrono::system_clock::time_point now) {
    forget(now);
    if (m_held.size() >= m_most) m_held.erase(oldest());
    std::string secret = newSecret();
    m_held.emplace(digestOf(secret), Held{std::move(value), now, m_nextNumber++});
    return secret;
  }

  /// The value that `secret` was given for, while it is good; null otherwise.
  [[nodiscard]] const Value *find(std::string_view secret, std::chrono::system_clock::time_point now) {
    forget(now);
    const auto found = m_held.find(digestOf(secret));
    return found == m_held.end() ? nullptr : &found->second.value;
  }

  /// The same, once.
  [[nodiscard]] std::optional<Value> take(std::string_view secret,
                                          std::chrono::system_clock::time_point now) {
    const Value *found = find(secret, now);
    if (!found) return std::nullopt;
    Value value = *found;
    m_held.erase(digestOf(secret));
    return value;
  }

 private:
  struct Held {
    Value value;
    std::chrono::system_clock::time_point since;
    std::uint64_t number;  // in the order of their making
  };
  using Map = std::map<std::string, Held>;

  /// A clock that was set back makes nothing live longer than its life.
  void forget(std::chrono::system_clock::time_point now) {
    std::erase_if(m_held, [&](const auto &entry) {
      return now < entry.second.since || now - entry.second.since >= m_life;
    });
  }
  typename Map::iterator oldest() {
    return std::min_element(m_held.begin(), m_held.end(), [](const auto &left, const auto &right) {
      return left.second.number < right.second.number;
    });
  }

  const std::size_t m_most;
  const std::chrono::seconds m_life;
  std::uint64_t m_nextNumber = 0;
  Map m_held;  // by the digest of its secret
};

}  // namespace velmora
