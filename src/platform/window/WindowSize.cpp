// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/window/WindowSize.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>

namespace velmora {

void boundToScreen(QWidget &window) {
  // What a window manager will put around it is not known before.
  const QStyle &style = *window.style();
  const int border = style.pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, &window);
  const int title = style.pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
  const QSize frame(2 * border, title + border);
  window.resize(window.size().boundedTo(window.screen()->availableSize() - frame));
}

}  // namespace velmora
