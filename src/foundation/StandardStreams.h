// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Programs include this in the source of their main function: standard streams that were closed at the start
// are held before any library takes their numbers.
#pragma once

namespace velmora {

/// Keeps the numbers of standard streams that were closed at the start from being given to files and
/// sockets, which would then receive our output or be read as our input. To be called before anything opens a
/// descriptor.
void holdStandardStreams();

namespace hold_early {

inline void holdFirst(int /*argc*/, char ** /*argv*/, char ** /*environment*/) { holdStandardStreams(); }

// Libraries open descriptors in their own initialisation already; this comes before that.
[[gnu::section(".preinit_array"), gnu::used]] static void (*const first)(int, char **, char **) = holdFirst;

}  // namespace hold_early
}  // namespace velmora
