// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace velmora {

/// A microphone, or whatever else brings sound in. What plays through a loudspeaker is none.
struct AudioDevice {
  std::string name;         ///< what the sound server calls it; stays the same from day to day
  std::string description;  ///< for people

  bool operator==(const AudioDevice &) const = default;
};

}  // namespace velmora
