// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "foundation/Log.h"

namespace velmora::fuzz {

/// A sink that takes the lines and drops them: what is only rendered for the log is fed as well.
[[maybe_unused]] inline const bool kLogIsRendered = [] {
  setLogSink([](std::string_view) {});
  return true;
}();

}  // namespace velmora::fuzz
