// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>
#include <array>
#include <functional>

namespace velmora {

/// A picture of a popover that grows out of its anchor, swings over and settles, while it fades in. Takes no
/// input. Rectangles are of the desktop in the upward axis. Main thread.
class PopoverZoomWindow : public QWidget {
  Q_OBJECT

 public:
  /// The first, the greatest and the last frame.
  using Frames = std::array<QRectF, 3>;

  /// `shape`, in the picture's logical pixels, is all that is shown without a compositor.
  PopoverZoomWindow(const QPixmap &picture, const QRegion &shape, const Frames &frames);

  /// Shows itself, runs for `milliseconds` and calls `done`, which may delete the window later.
  void zoom(int milliseconds, std::function<void()> done);

  /// Where the picture is now.
  [[nodiscard]] QRectF frame() const { return m_frame; }

 protected:
  void paintEvent(QPaintEvent *event) override;

 private:
  void moveTo(double progress);
  /// The frame in this window.
  [[nodiscard]] QRectF target() const;

  QPixmap m_picture;
  QRegion m_shape;
  bool m_composited;
  Frames m_frames;
  QRectF m_frame;
  QVariantAnimation m_animation;
};

}  // namespace velmora
