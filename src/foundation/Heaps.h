// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace velmora {

/// Lets all threads of this process share two heaps. Each thread of a turn would otherwise take what it frees
/// into a heap that the others do not use: a few dozen turns later that is tens of megabytes. Before the
/// first thread.
void shareHeaps();

/// Gives back to the system what the heaps keep of what was freed: several megabytes after a turn or a
/// sign-in. Threads that allocate meanwhile wait for it, about a millisecond. Any thread.
void trimHeaps();

}  // namespace velmora
