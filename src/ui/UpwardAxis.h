// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Waves and popovers are computed with y growing upward and the origin in the lower left corner; Qt's y grows
// downward. This is the one place that turns one into the other.
#pragma once

#include <QPainter>
#include <QRectF>

namespace velmora {

/// Lets `painter` draw in the upward axis of an area of `height` logical pixels.
void turnUpward(QPainter &painter, double height);

/// `rect` of an area of `height` in the other axis; the same function leads back.
[[nodiscard]] QRectF turned(const QRectF &rect, double height);

/// `rect` of the desktop in the other axis; the same function leads back. The upward origin is the lower edge
/// of the primary screen, all in logical pixels. Main thread.
[[nodiscard]] QRectF turnedOnDesktop(const QRectF &rect);

/// The whole pixels of `rect`, whose origin is rounded half up, so that a size never depends on the place.
[[nodiscard]] QRect wholePixels(const QRectF &rect);

}  // namespace velmora
