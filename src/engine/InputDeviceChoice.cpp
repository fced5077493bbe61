// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/InputDeviceChoice.h"

#include "foundation/UserDefaults.h"
#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioSource.h"
#include "ui/preferences/PreferenceKeys.h"

namespace velmora {

void selectChosenInputDevice(const UserDefaults &defaults, AudioEngine &engine) {
  const std::string chosen = defaults.stringForKey(kInputDeviceKey).toStdString();
  // An engine that was never told otherwise hears the default one.
  auto wanted = AudioEngine().inputDevice();
  for (const AudioDevice &device : AudioEngine::inputDevices().value_or(std::vector<AudioDevice>())) {
    if (device.name == chosen) wanted = device;
  }
  if (!wanted) return;
  try {
    engine.setInputDevice(*wanted);
  } catch (const AudioError &) {
    // Gone since: the default one stands in.
  }
}

}  // namespace velmora
