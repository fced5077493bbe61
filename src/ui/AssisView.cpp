// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/AssisView.h"

#include <QPaintEvent>
#include <QPainter>

namespace velmora {

void AssisView::paintEvent(QPaintEvent *event) {
  QPainter(this).fillRect(event->rect(), Qt::white);
  QWidget::paintEvent(event);
}

}  // namespace velmora
