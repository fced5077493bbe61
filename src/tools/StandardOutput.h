// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string_view>

namespace velmora {

/// Writes all of `text` at once to `descriptor`. Throws `std::system_error`, and `std::runtime_error` when a
/// signal arrives while the reader makes us wait and `interrupted` then says so.
void writeAll(int descriptor, std::string_view text, const std::function<bool()> &interrupted);

}  // namespace velmora
