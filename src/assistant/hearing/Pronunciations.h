// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace velmora {

/// How the words of `Language`, and common ones, are pronounced, a line each: "word PHONES", and "word(2)
/// PHONES" for another way to say it. Chosen by the build, since the whole dictionary takes four times as
/// long to load as all the rest.
[[nodiscard]] std::string_view pronunciations();

}  // namespace velmora
