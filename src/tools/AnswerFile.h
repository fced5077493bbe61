// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace velmora {

/// Where the answer of turn `number` (from 1) of `turns` goes: `file` itself when there is only one, else
/// with the number before the extension.
[[nodiscard]] std::filesystem::path answerFile(const std::filesystem::path &file, std::size_t number,
                                               std::size_t turns);

/// Throws `std::runtime_error` with the path when it is plain already that the answers of so many turns
/// cannot be written.
void checkAnswerFiles(const std::filesystem::path &file, std::size_t turns);

/// Replaces `file` by the whole `answer` or leaves it as it was; what is no regular file, such as a device,
/// is written to directly. Throws `std::runtime_error` with the path and the reason.
void saveAnswer(const std::filesystem::path &file, const std::string &answer);

}  // namespace velmora
