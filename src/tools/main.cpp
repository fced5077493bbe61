// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ConverseProgram.h"
#include "tools/StandardOutput.h"

namespace {

void holdFirst(int /*argc*/, char ** /*argv*/, char ** /*environment*/) { velmora::holdStandardStreams(); }

// Libraries open descriptors in their own initialisation already; this comes before that.
[[gnu::section(".preinit_array"), gnu::used]] void (*const holdEarly)(int, char **, char **) = holdFirst;

}  // namespace

int main(int argc, char **argv) { return velmora::runConverse({argv + (argc > 0 ? 1 : 0), argv + argc}); }
