// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The audio that a command line names: files, and "-" for raw samples on standard input.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/audio/AudioSource.h"

namespace velmora {

/// Opens every file for a moment. Throws `AudioError` for the first one that cannot be used, and for a
/// terminal where samples are expected.
void checkAudio(const std::vector<std::string> &names);

/// The audio of one turn. What has gone wrong with a file since it was checked shows when it is read. Waiting
/// for standard input is broken off while `wakeDescriptor` is readable.
[[nodiscard]] std::unique_ptr<AudioSource> turnAudio(const std::string &name, int wakeDescriptor);

}  // namespace velmora
