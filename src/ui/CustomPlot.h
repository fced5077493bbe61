// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <utility>

#include "ui/AudioPlot.h"

class QMouseEvent;

namespace velmora {

/// A plot that is a button as well. Main thread.
class CustomPlot : public AudioPlot {
  Q_OBJECT

 public:
  using ClickHandler = std::function<void(QMouseEvent &)>;
  explicit CustomPlot(QWidget *parent = nullptr);

  /// What a press of the left mouse button does, in the place of an earlier one; empty: nothing. It may set
  /// another, and may destroy the plot.
  void setClickListener(ClickHandler h) { m_handler = std::move(h); }
  /// Does what a press of the left button in the middle does.
  void click();

 protected:
  /// Is all that becomes of a left press, handler or not; the second of a double click is one like any other.
  void mousePressEvent(QMouseEvent *event) override;

 private:
  ClickHandler m_handler;
};

}  // namespace velmora
