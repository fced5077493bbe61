// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/hearing/RecogniserPool.h"

#include <algorithm>
#include <utility>

namespace velmora {

RecogniserPool::RecogniserPool(std::size_t size)
    : RecogniserPool(size, [] { return std::make_unique<Recogniser>(); }) {}

RecogniserPool::RecogniserPool(std::size_t size, Maker maker)
    : m_maker(std::move(maker)), m_mayMake(std::max<std::size_t>(size, 1)) {}

void RecogniserPool::prepare() { giveBack(take()); }

Recognition RecogniserPool::recognise(std::span<const std::int16_t> utterance, const std::string &question) {
  // A recogniser that failed in the middle of an utterance is not lent again.
  std::unique_ptr<Recogniser> recogniser = take();
  try {
    Recognition heard = recogniser->recognise(utterance, question);
    giveBack(std::move(recogniser));
    return heard;
  } catch (...) {
    giveBack(nullptr);
    throw;
  }
}

std::unique_ptr<Recogniser> RecogniserPool::take() {
  {
    std::unique_lock lock(m_mutex);
    m_freed.wait(lock, [this] { return !m_idle.empty() || m_mayMake > 0; });
    if (!m_idle.empty()) {
      auto recogniser = std::move(m_idle.back());
      m_idle.pop_back();
      return recogniser;
    }
    --m_mayMake;
  }
  try {
    return m_maker();
  } catch (...) {
    giveBack(nullptr);
    throw;
  }
}

void RecogniserPool::giveBack(std::unique_ptr<Recogniser> recogniser) {
  {
    const std::lock_guard lock(m_mutex);
    if (recogniser) {
      m_idle.push_back(std::move(recogniser));
    } else {
      ++m_mayMake;
    }
  }
  m_freed.notify_one();
}

}  // namespace velmora
