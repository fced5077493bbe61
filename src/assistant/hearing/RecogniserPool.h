// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A few recognisers that serve many streams.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "assistant/hearing/Recogniser.h"

namespace velmora {

/// Lends each utterance a recogniser for as long as it is decoded; whoever finds all of them busy waits. They
/// are made when first needed and kept. Thread-safe.
class RecogniserPool {
 public:
  using Maker = std::function<std::unique_ptr<Recogniser>()>;

  /// At most `size` (at least one) recognisers with the installed model.
  explicit RecogniserPool(std::size_t size = 2);
  /// The same with recognisers from `maker`, which is called on the thread that needs one and may throw.
  RecogniserPool(std::size_t size, Maker maker);

  /// Makes the first recogniser unless there is one, so that a broken installation shows at start and the
  /// first request finds it ready. Throws what the recogniser's constructor throws.
  void prepare();

  /// As `Recogniser::recognise`, including what its constructor throws.
  [[nodiscard]] Recognition recognise(std::span<const std::int16_t> utterance,
                                      const std::string &question = {});

 private:
  std::unique_ptr<Recogniser> take();
  void giveBack(std::unique_ptr<Recogniser> recogniser);

  const Maker m_maker;
  std::mutex m_mutex;
  std::condition_variable m_freed;
  std::vector<std::unique_ptr<Recogniser>> m_idle;  // guarded by m_mutex
  std::size_t m_mayMake;                            // guarded by m_mutex: how many more are allowed
};

}  // namespace velmora
