// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The files of resources/assistant, compiled in so that they can be neither missing nor of another version.
// Lines that begin with # are comments.
#pragma once

#include <string_view>

namespace velmora {

[[nodiscard]] std::string_view jokes();
[[nodiscard]] std::string_view facts();

}  // namespace velmora
