// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/network/NameResolver.h"

#include <netdb.h>
#include <sys/socket.h>

#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace velmora {

namespace {

using Clock = std::chrono::steady_clock;

// A look-up behind a dead gateway sits there for many seconds; a few may, while the network changes.
constexpr int kMostThreads = 4;
constexpr std::chrono::seconds kGoodFor{60};
constexpr std::chrono::seconds kRetryAfter{5};

std::vector<IpAddress> lookUp(const std::string &name) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;  // each address once
  addrinfo *list = nullptr;
  std::vector<IpAddress> found;
  if (::getaddrinfo(name.c_str(), nullptr, &hints, &list) != 0) return found;
  for (const addrinfo *entry = list; entry; entry = entry->ai_next) {
    if (const auto address = IpAddress::from(*entry->ai_addr)) found.push_back(*address);
  }
  ::freeaddrinfo(list);
  return found;
}

}  // namespace

struct NameResolver::State {
  std::string name;
  bool literal = false;
  mutable std::mutex mutex;
  // Below guarded by mutex.
  std::optional<std::vector<IpAddress>> addresses;
  Clock::time_point ended;
  int wanted = 0;    // the number of the look-up whose result counts
  int finished = 0;  // and of the last one that counted
  int threads = 0;
  bool again = false;  // once a thread is free
  std::mutex telling;  // held while `news` runs
  News news;           // guarded by telling
};

NameResolver::NameResolver(std::string name) : m_state(std::make_shared<State>()) {
  if (const auto literal = IpAddress::parse(name.c_str())) {
    m_state->addresses = {*literal};
    m_state->literal = true;
  }
  m_state->name = std::move(name);
  refresh();
}

NameResolver::~NameResolver() {
  setNews({});
  const std::lock_guard lock(m_state->mutex);
  ++m_state->wanted;
  m_state->again = false;
}

void NameResolver::setNews(News news) {
  const std::lock_guard lock(m_state->telling);
  m_state->news = std::move(news);
}

void NameResolver::refresh() { begin(m_state); }

void NameResolver::begin(const std::shared_ptr<State> &state) {
  const std::lock_guard lock(state->mutex);
  if (state->literal) return;
  const int number = ++state->wanted;
  if (state->threads == kMostThreads) {
    state->again = true;
    return;
  }
  try {
    std::thread([state, number] {
      std::vector<IpAddress> found = lookUp(state->name);
      bool counts = false;
      bool again = false;
      {
        const std::lock_guard inside(state->mutex);
        --state->threads;
        again = std::exchange(state->again, false);
        counts = number == state->wanted;
        if (counts) {
          state->addresses = std::move(found);
          state->ended = Clock::now();
          state->finished = number;
        }
      }
      if (again) begin(state);
      const std::lock_guard telling(state->telling);
      if (counts && state->news) state->news();
    }).detach();
    ++state->threads;
  } catch (const std::system_error &) {
    // No thread to be had: it counts as a look-up that found nothing, and is tried again like one.
    state->addresses.emplace();
    state->ended = Clock::now();
    state->finished = number;
  }
}

void NameResolver::refreshIfStale() {
  {
    const std::lock_guard lock(m_state->mutex);
    if (m_state->finished != m_state->wanted) return;
    const auto age = Clock::now() - m_state->ended;
    if (age < (m_state->addresses->empty() ? kRetryAfter : kGoodFor)) return;
  }
  refresh();
}

std::optional<std::vector<IpAddress>> NameResolver::addresses() const {
  const std::lock_guard lock(m_state->mutex);
  return m_state->addresses;
}

bool NameResolver::failed() const {
  const std::lock_guard lock(m_state->mutex);
  return m_state->addresses && m_state->addresses->empty();
}

}  // namespace velmora
