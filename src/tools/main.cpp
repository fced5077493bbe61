// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/StandardStreams.h"
#include "tools/ConverseProgram.h"

int main(int argc, char **argv) { return velmora::runConverse({argv + (argc > 0 ? 1 : 0), argv + argc}); }
