// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// An enumeration of a wire message: named cases, and every other number kept as it came.
//
//   switch (result.microphoneMode()) {
//     case MicrophoneMode::dialogFollowOn: …
//     default: …  // a number that a newer peer knows
//   }
#pragma once

#include <cstdint>

namespace velmora {

/// `Cases` brings `enum class Case : std::int32_t`, numbered from 0 without a gap, a constant for each case
/// (GCC 12 fails on `using enum` in a class when a template names a case) and `static constexpr Case
/// lastCase`. A plain value without invariants; the default is the case numbered 0.
template <typename Cases>
class OpenEnum : public Cases {
 public:
  using Case = typename Cases::Case;

  constexpr OpenEnum() noexcept = default;
  // Implicit, so that a named case can stand wherever the enumeration is wanted.
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr OpenEnum(Case value) noexcept : m_number(static_cast<std::int32_t>(value)) {}

  /// The named case of a known number, else `UNRECOGNIZED`.
  [[nodiscard]] static constexpr OpenEnum fromNumber(std::int32_t number) noexcept {
    return OpenEnum(static_cast<Case>(number));
  }
  /// The value that carries `number`; a number that has a name gives the named case.
  [[nodiscard]] static constexpr OpenEnum UNRECOGNIZED(std::int32_t number) noexcept {
    return fromNumber(number);
  }

  [[nodiscard]] constexpr std::int32_t number() const noexcept { return m_number; }
  [[nodiscard]] constexpr bool isUnrecognized() const noexcept {
    return m_number < 0 || m_number > static_cast<std::int32_t>(Cases::lastCase);
  }

  /// For `switch`; a value without a name goes to `default`.
  // NOLINTNEXTLINE(google-explicit-constructor)
  constexpr operator Case() const noexcept { return static_cast<Case>(m_number); }

  friend constexpr bool operator==(OpenEnum a, OpenEnum b) noexcept { return a.m_number == b.m_number; }
  friend constexpr bool operator==(OpenEnum a, Case b) noexcept { return a == OpenEnum(b); }

 private:
  std::int32_t m_number = 0;
};

}  // namespace velmora
