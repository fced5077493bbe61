// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Whole files: read without ever waiting, and replaced as a whole or not at all.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Far above any file that is read at once, far below what would endanger the machine.
inline constexpr std::size_t kLargestFile = std::size_t{16} * 1024 * 1024;  // bytes

/// The whole contents of a regular file; anything else, such as a pipe or a device, could keep the program
/// waiting and is refused, and so is more than `kLargestFile`. Throws `std::system_error` where the system
/// gives a reason, else `std::runtime_error`, with the path and the reason.
[[nodiscard]] std::string readFile(const std::filesystem::path &path);

/// Replaces a file in one step by `bytes`, which are on the disk then, or leaves it as it was. A symbolic
/// link stays one. The file gets `mode` before its first byte is written; without one it keeps that of the
/// file it replaces, or gets the usual one. Throws `std::runtime_error` with the path and the reason.
void writeFile(const std::filesystem::path &path, std::string_view bytes, std::optional<mode_t> mode = {});

}  // namespace velmora
