// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace velmora {

/// What fills a popover: the owner of one view. A screen that is a widget itself is its own view. Whoever
/// shows the view takes it as a child for the time and hands it back; the controller outlives its showing.
class ViewController {
 public:
  virtual ~ViewController() = default;
  ViewController(const ViewController &) = delete;
  ViewController &operator=(const ViewController &) = delete;

  [[nodiscard]] virtual QWidget &view() = 0;

 protected:
  ViewController() = default;
};

}  // namespace velmora
