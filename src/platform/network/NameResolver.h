// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/network/RouteProbe.h"

namespace velmora {

/// Looks a host's name up in the background. The system's look-up can take ten seconds and cannot be broken
/// off: it runs on a thread of its own that is left to itself when nobody wants its result any more.
class NameResolver {
 public:
  using News = std::function<void()>;

  /// Begins the first look-up. An address as text needs none.
  explicit NameResolver(std::string name);
  /// Does not wait; no news begins after that.
  ~NameResolver();
  NameResolver(const NameResolver &) = delete;
  NameResolver &operator=(const NameResolver &) = delete;

  /// Who is told, on a thread of the resolver's, when a look-up has ended; returns when nobody is being told.
  void setNews(News news);

  /// Begins a look-up; what runs already is no longer wanted. Any thread.
  void refresh();
  /// The same if the last one is old or failed some seconds ago. Any thread.
  void refreshIfStale();

  /// What the last look-up found, nothing before the first has ended; empty when there is no such host. Any
  /// thread.
  [[nodiscard]] std::optional<std::vector<IpAddress>> addresses() const;
  /// Whether the last look-up found nothing. Any thread.
  [[nodiscard]] bool failed() const;

 private:
  struct State;
  static void begin(const std::shared_ptr<State> &state);

  std::shared_ptr<State> m_state;
};

}  // namespace velmora
