// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/waveform/Wave.h"

#include <algorithm>

#include "foundation/fatal.h"

namespace velmora {

void requireWaves(std::int64_t numberOfWaves) {
  if (numberOfWaves < 0) fatal("the number of waves is negative");
}

void strokeWave(QPainter &painter, const QPolygonF &points, const QColor &color, double lineWidth) {
  if (!std::all_of(points.begin(), points.end(), [](const QPointF &point) { return qIsFinite(point.y()); }))
    return;
  QPen pen(color, lineWidth, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
  pen.setMiterLimit(10);
  painter.setPen(pen);
  painter.drawPolyline(points);
}

}  // namespace velmora
