// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>

namespace velmora {

/// The user's folder for what survives a restart and is no setting, velmora in the XDG folder of that kind,
/// made with mode 0700 if it is missing. Nothing when the user has no home or the folder cannot be made.
[[nodiscard]] std::optional<std::filesystem::path> stateFolder();

}  // namespace velmora
