// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/popover/INPopoverController.h"

namespace velmora {

/// The edge of a rectangle, in the upward axis: a popover on the lower edge hangs below.
enum class RectEdge : int { minX = 0, minY = 1, maxX = 2, maxY = 3 };

/// The status item's popover, in the colours of its content. It stays open until it is closed, whatever has
/// the focus, unless it is transient. Main thread.
class Popover {
 public:
  Popover();

  /// Outlives the popover, or is taken back. A shown popover takes the new view's size; one that is not asks
  /// for the view when it will be.
  [[nodiscard]] ViewController *contentViewController() const { return m_content; }
  void setContentViewController(ViewController *controller);

  /// Hears of opening and closing; outlives the popover, or is taken back.
  void setDelegate(INPopoverControllerDelegate *delegate) { m_controller.setDelegate(delegate); }

  /// A transient popover closes when the focus goes elsewhere. Looked at when it is shown.
  [[nodiscard]] bool isTransient() const { return m_controller.closesWhenPopoverResignsKey(); }
  void setTransient(bool transient);

  [[nodiscard]] bool isShown() const { return m_controller.popoverIsVisible(); }
  /// Shows it on `preferredEdge` of `rect` of `view`, in the view's coordinates, or of the desktop when there
  /// is no view. Nothing when shown.
  void show(const QRectF &rect, QWidget *view, RectEdge preferredEdge = RectEdge::minY);
  /// Closes unless the delegate objects. Nothing when not shown.
  void performClose() { m_controller.closePopover(); }

  [[nodiscard]] const INPopoverController &controller() const { return m_controller; }

 private:
  void takeColours();

  INPopoverController m_controller;
  ViewController *m_content = nullptr;
};

}  // namespace velmora
