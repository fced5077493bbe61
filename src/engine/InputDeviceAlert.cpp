// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/InputDeviceAlert.h"

#include <QCoreApplication>

#include "platform/Alert.h"

namespace velmora {

void alertWithoutInputDevice() {
  showAlert({.messageText = QCoreApplication::translate("InputDeviceAlert", "Google Assistant"),
             .informativeText = QCoreApplication::translate(
                 "InputDeviceAlert", "Please attach Audio Input device to start with Google Assistant"),
             .style = AlertStyle::critical});
}

}  // namespace velmora
