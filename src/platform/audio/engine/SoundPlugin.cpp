// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/engine/SoundPlugin.h"

#include "foundation/Log.h"

namespace velmora {

const SoundEngine &SoundPlugin::engine(const std::function<void(std::string_view line)> &log) {
  // What the plugin has of the log is its own, with one sink: the program's log.
  setLogSink(log);
  return soundEngine();
}

}  // namespace velmora
