// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/PopoverZoomWindow.h"

#include <QPainter>

#include "platform/window/Compositor.h"
#include "ui/UpwardAxis.h"

namespace velmora {

namespace {

QRectF between(const QRectF &from, const QRectF &to, double part) {
  const auto mix = [part](double a, double b) { return a + (b - a) * part; };
  return {mix(from.x(), to.x()), mix(from.y(), to.y()), mix(from.width(), to.width()),
          mix(from.height(), to.height())};
}

}  // namespace

PopoverZoomWindow::PopoverZoomWindow(const QPixmap &picture, const QRegion &shape, const Frames &frames)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::X11BypassWindowManagerHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput),
      m_picture(picture),
      m_shape(shape),
      m_composited(desktopIsComposited()),
      m_frames(frames) {
  setAttribute(Qt::WA_TranslucentBackground);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setAttribute(Qt::WA_QuitOnClose, false);
  // One window for the whole way: a window that changes its size with each frame flickers.
  setGeometry(turnedOnDesktop(frames[0] | frames[1] | frames[2]).toAlignedRect());
  moveTo(0);
}

void PopoverZoomWindow::zoom(int milliseconds, std::function<void()> done) {
  m_animation.setStartValue(0.0);
  m_animation.setEndValue(1.0);
  m_animation.setDuration(milliseconds);
  connect(&m_animation, &QVariantAnimation::valueChanged, this,
          [this](const QVariant &value) { moveTo(value.toDouble()); });
  connect(&m_animation, &QVariantAnimation::finished, this, std::move(done));
  show();
  m_animation.start();
}

void PopoverZoomWindow::moveTo(double progress) {
  m_frame = progress < 0.5 ? between(m_frames[0], m_frames[1], progress * 2)
                           : between(m_frames[1], m_frames[2], progress * 2 - 1);
  setWindowOpacity(progress);
  if (!m_composited) {
    const QTransform fit = QTransform::fromTranslate(target().x(), target().y())
                               .scale(target().width() / m_picture.deviceIndependentSize().width(),
                                      target().height() / m_picture.deviceIndependentSize().height());
    setMask(fit.map(m_shape));
  }
  update();
}

QRectF PopoverZoomWindow::target() const { return turnedOnDesktop(m_frame).translated(-pos()); }

void PopoverZoomWindow::paintEvent(QPaintEvent *) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawPixmap(target(), m_picture, m_picture.rect());
}

}  // namespace velmora
