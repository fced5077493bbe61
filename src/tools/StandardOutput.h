// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string_view>

namespace velmora {

/// Keeps the numbers of standard streams that were closed at the start from being given to files and
/// sockets, which would then receive our output or be read as our input. To be called before anything opens a
/// descriptor.
void holdStandardStreams();

/// Writes all of `text` at once to `descriptor`. Throws `std::system_error`, and `std::runtime_error` when a
/// signal arrives while the reader makes us wait and `interrupted` then says so.
void writeAll(int descriptor, std::string_view text, const std::function<bool()> &interrupted);

}  // namespace velmora
