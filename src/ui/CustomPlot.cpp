// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/CustomPlot.h"

#include <QMouseEvent>

#include "ui/CustomPlotAccessible.h"

namespace velmora {

CustomPlot::CustomPlot(QWidget *parent) : AudioPlot(parent) { CustomPlotAccessible::install(); }

void CustomPlot::click() {
  const QPointF middle = QRectF(rect()).center();
  QMouseEvent press(QEvent::MouseButtonPress, middle, mapToGlobal(middle), Qt::LeftButton, Qt::LeftButton,
                    {});
  mousePressEvent(&press);
}

void CustomPlot::mousePressEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton) return AudioPlot::mousePressEvent(event);
  event->accept();
  const ClickHandler handler = m_handler;  // outlives its own replacement
  if (handler) handler(*event);
}

}  // namespace velmora
