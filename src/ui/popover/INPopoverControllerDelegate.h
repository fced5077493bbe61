// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace velmora {

class INPopoverController;

/// Hears of a popover's opening and closing; each call may be left out. A call may open and close the
/// popover, and does not destroy it. Main thread.
class INPopoverControllerDelegate {
 public:
  virtual ~INPopoverControllerDelegate() = default;
  virtual void popoverWillShow(INPopoverController & /*popover*/) {}
  virtual void popoverDidShow(INPopoverController & /*popover*/) {}
  /// Whether the popover may close now; not asked when it is closed by force.
  [[nodiscard]] virtual bool popoverShouldClose(INPopoverController & /*popover*/) { return true; }
  virtual void popoverWillClose(INPopoverController & /*popover*/) {}
  virtual void popoverDidClose(INPopoverController & /*popover*/) {}
};

}  // namespace velmora
