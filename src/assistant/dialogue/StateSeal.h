// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The conversation's state on its way through the client: nobody can read it, and nobody can make or change
// one but us.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Encrypts and authenticates with AES-256-GCM. Immutable; any thread.
class StateSeal {
 public:
  using Key = std::array<unsigned char, 32>;
  using Time = std::chrono::sys_seconds;

  /// A sealed state is larger than what is in it by so many bytes.
  static constexpr std::size_t kOverhead = 1 + 8 + 12 + 16;
  static constexpr std::size_t kLargest = 1024;  ///< bytes of a sealed state
  /// A conversation that was left for so long is over.
  static constexpr std::chrono::minutes kLifetime{15};
  /// A clock is set right now and then; a state may be from so far in the future.
  static constexpr std::chrono::minutes kClockSteps{5};

  explicit StateSeal(const Key &key) : m_key(key) {}

  /// Throws `std::runtime_error` when there is no randomness.
  [[nodiscard]] static Key randomKey();
  /// The key kept in `file`, which is made with mode 0600 if it is missing or holds no key, so that
  /// conversations go on when the service is started anew. Throws `std::runtime_error` with the path when it
  /// can be neither read nor made.
  [[nodiscard]] static Key keyIn(const std::filesystem::path &path);

  /// `text` sealed at `now`. Throws `std::length_error` when it would be larger than `kLargest`, and
  /// `std::runtime_error` when the cipher fails.
  [[nodiscard]] std::string seal(std::string_view text, Time now) const;
  /// What was sealed; nothing when it is not of this key, changed, or older than `kLifetime`, or
  /// from further in the future than `kClockSteps`.
  [[nodiscard]] std::optional<std::string> open(std::string_view sealed, Time now) const;

 private:
  const Key m_key;
};

}  // namespace velmora
