// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/InputDeviceChoice.h"

#include <gtest/gtest.h>

#include "foundation/UserDefaults.h"
#include "platform/audio/AudioEngine.h"
#include "support/SoundServer.h"
#include "support/Waiting.h"
#include "ui/preferences/PreferenceKeys.h"

namespace velmora {
namespace {

TEST(InputDeviceChoice, TheChosenOneWhileItIsThereElseTheDefault) {
  tests::SoundServer server;
  UserDefaults defaults;
  AudioEngine engine;
  const auto hears = [&](const std::string &name) {
    return tests::eventually([&] {
      selectChosenInputDevice(defaults, engine);
      const auto device = engine.inputDevice();
      return device && device->name == name;
    });
  };
  EXPECT_TRUE(hears("mic"));
  defaults.setObject(QStringLiteral("other"), kInputDeviceKey);
  EXPECT_TRUE(hears("mic")) << "not attached yet";
  server.plugMicrophone("other");
  EXPECT_TRUE(hears("other"));
  defaults.removeObjectForKey(kInputDeviceKey);
  EXPECT_TRUE(hears("mic"));
  defaults.setObject(QStringLiteral("other"), kInputDeviceKey);
  EXPECT_TRUE(hears("other"));
  server.unplugMicrophone("other");
  EXPECT_TRUE(hears("mic"));
}

}  // namespace
}  // namespace velmora
