// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/Popover.h"

#include <QGuiApplication>
#include <QPalette>

namespace velmora {

namespace {

ArrowDirection arrowFor(RectEdge edge) {
  switch (edge) {
    case RectEdge::minX: return ArrowDirection::right;
    case RectEdge::maxX: return ArrowDirection::left;
    case RectEdge::maxY: return ArrowDirection::down;
    default: return ArrowDirection::up;
  }
}

}  // namespace

Popover::Popover() {
  // Shown is what is visible, from the first moment on.
  m_controller.setAnimationType(INPopoverAnimationType::fadeInAndOut);
  m_controller.setStaysOnScreen(true);
  setTransient(false);
}

void Popover::setTransient(bool transient) {
  m_controller.setClosesWhenPopoverResignsKey(transient);
  m_controller.setClosesWhenApplicationBecomesInactive(transient);
}

void Popover::setContentViewController(ViewController *controller) {
  m_content = controller;
  if (isShown()) {
    m_controller.setContentViewController(controller);
    takeColours();
  } else if (m_controller.contentViewController() != controller) {
    // Perhaps it goes before the next one is looked at.
    m_controller.setContentViewController(nullptr);
  }
}

/// The bubble goes on where the content ends.
void Popover::takeColours() {
  const QPalette palette =
      m_content != nullptr ? m_controller.contentView()->palette() : QGuiApplication::palette();
  const QColor window = palette.color(QPalette::Window);
  const QColor text = palette.color(QPalette::WindowText);
  const auto mix = [](int a, int b) { return (3 * a + b) / 4; };
  m_controller.setColor(window);
  m_controller.setBorderColor(QColor(mix(window.red(), text.red()), mix(window.green(), text.green()),
                                     mix(window.blue(), text.blue())));
}

void Popover::show(const QRectF &rect, QWidget *view, RectEdge preferredEdge) {
  if (isShown()) return;
  m_controller.setContentViewController(m_content);
  takeColours();
  m_controller.setBorderWidth(1);
  m_controller.presentPopoverFromRect(rect, view, arrowFor(preferredEdge), view != nullptr);
}

}  // namespace velmora
