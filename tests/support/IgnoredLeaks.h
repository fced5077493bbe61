// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace velmora::tests {

/// While it lives, nobody asks what this thread allocates to be freed: for a library that leaks where no
/// frame of its own is in sight of a suppression.
class IgnoredLeaks {
 public:
#if defined(__SANITIZE_ADDRESS__)
  IgnoredLeaks() { __lsan_disable(); }
  ~IgnoredLeaks() { __lsan_enable(); }
#else
  IgnoredLeaks() {}
  ~IgnoredLeaks() {}
#endif
  IgnoredLeaks(const IgnoredLeaks &) = delete;
  IgnoredLeaks &operator=(const IgnoredLeaks &) = delete;
};

}  // namespace velmora::tests
