// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Heaps.h"

#include <malloc.h>

namespace velmora {

void shareHeaps() {
  constexpr int kHeaps = 2;
  ::mallopt(M_ARENA_MAX, kHeaps);
}

void trimHeaps() { ::malloc_trim(0); }

}  // namespace velmora
