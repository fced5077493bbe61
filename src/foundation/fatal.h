// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The end of the program for conditions that leave nothing sensible to do: an installation without its
// resources, a number that cannot be represented, a broken contract between our own parts.
#pragma once

#include <concepts>
#include <string_view>
#include <utility>

namespace velmora {

/// Writes `text` as one line to standard error and aborts. Any thread.
[[noreturn]] void fatal(std::string_view text);

/// `value` as an `Integer`, fractions cut off; fatal with `what` when it does not fit. NaN never fits. Any
/// thread.
template <std::signed_integral Integer, typename Number>
[[nodiscard]] Integer exactly(Number value, std::string_view what) {
  if constexpr (std::integral<Number>) {
    if (!std::in_range<Integer>(value)) fatal(what);
  } else {
    // 2^(bits-1) is exact in every floating-point type, the largest integer itself need not be.
    constexpr auto limit = static_cast<Number>(Integer{1} << (sizeof(Integer) * 8 - 2)) * 2;
    if (!(value >= -limit && value < limit)) fatal(what);
  }
  return static_cast<Integer>(value);
}

}  // namespace velmora
