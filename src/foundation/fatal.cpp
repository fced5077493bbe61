// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/fatal.h"

#include <cstdlib>

#include "foundation/Log.h"

namespace velmora {

void fatal(std::string_view text) {
  standardErrorSink()(text);
  std::abort();
}

}  // namespace velmora
