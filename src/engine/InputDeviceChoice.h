// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace velmora {

class AudioEngine;
class UserDefaults;

/// Has the engine hear the microphone that the user has chosen in the preferences, or the desktop's default
/// one while that is not attached or none is chosen. To be called before each turn, since microphones come
/// and go; waits as `AudioEngine::inputDevices` does. Main thread.
void selectChosenInputDevice(const UserDefaults &defaults, AudioEngine &engine);

}  // namespace velmora
