// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/AssistantViewController.h"

namespace velmora {

AssistantViewController::AssistantViewController(AssistantHost &host, UserDefaults &defaults)
    : AssistantScreen(host, defaults) {}

QWidget &AssistantViewController::view() {
  if (!isViewLoaded()) viewDidLoad();
  return *this;
}

}  // namespace velmora
