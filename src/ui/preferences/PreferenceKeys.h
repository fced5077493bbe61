// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the preferences window keeps in the user's settings, besides the shortcut, which its recorder keeps.
#pragma once

#include <QLatin1String>

namespace velmora {

/// Boolean, absent at first: the login item is enabled.
inline constexpr QLatin1String kRunAtLaunchEnableKey("RunAtLaunchEnable");
/// Boolean, absent (off) at first: the spoken command "okay mac" opens the assistant.
inline constexpr QLatin1String kHotwordEnableKey("HotwordEnable");
/// Text: the name of the microphone that the user has chosen; absent where it is the desktop's default.
inline constexpr QLatin1String kInputDeviceKey("InputDevice");
/// Number, 1 to 100 (full), which is what holds where it is absent: how loud answers are asked for, in
/// percent.
inline constexpr QLatin1String kAnswerVolumeKey("AnswerVolume");
/// Text: the code of the language that the windows are in from the next start on; absent where it is the
/// desktop's.
inline constexpr QLatin1String kLanguageKey("Language");

/// The helper whose login item starts Velmora.
inline constexpr char kLoginHelperIdentifier[] = "com.brindlewick.GAHelperApp";

}  // namespace velmora
