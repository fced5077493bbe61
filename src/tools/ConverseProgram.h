// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace velmora {

/// The program velmora-converse with the arguments that follow its name. Returns its exit status: 0 when
/// every turn was answered, 1 after a failure, 2 for wrong arguments; each with one line on standard error.
[[nodiscard]] int runConverse(const std::vector<std::string> &arguments);

}  // namespace velmora
