// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/AssistantScreen.h"
#include "platform/ViewController.h"

namespace velmora {

/// The assistant screen in the popover. Main thread.
class AssistantViewController final : public AssistantScreen, public ViewController {
  Q_OBJECT

 public:
  AssistantViewController(AssistantHost &host, UserDefaults &defaults);
  ~AssistantViewController() override { endConversation(); }

  /// Sets up what is seen, the first time.
  [[nodiscard]] QWidget &view() override;

 protected:
  void closeScreen() override { host().closeShownPopover(); }
};

}  // namespace velmora
