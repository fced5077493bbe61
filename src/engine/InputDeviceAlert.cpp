// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/InputDeviceAlert.h"

#include "platform/Alert.h"

namespace velmora {

void alertWithoutInputDevice() {
  showAlert(
      {.messageText = QStringLiteral("Google Assistant"),
       .informativeText = QStringLiteral("Please attach Audio Input device to start with Google Assistant"),
       .style = AlertStyle::critical});
}

}  // namespace velmora
