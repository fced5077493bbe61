// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/preferences/ApplicationInformation.h"

namespace velmora {

struct Deployment;

/// The application as its assistant screens see it. Main thread.
class AssistantHost {
 public:
  /// Whether the network can be reached now.
  [[nodiscard]] virtual bool isReachable() const = 0;
  /// The service to talk to; null while it is not there (yet). The screens are told of changes.
  [[nodiscard]] virtual const Deployment *deployment() const = 0;
  [[nodiscard]] virtual ApplicationInformation information() const = 0;
  /// Closes the popover if it is shown.
  virtual void closeShownPopover() = 0;
  /// Ends the application.
  virtual void terminate() = 0;
  /// A screen has become busy, or has ceased to be.
  virtual void screenBusyChanged() = 0;

 protected:
  ~AssistantHost() = default;
};

}  // namespace velmora
