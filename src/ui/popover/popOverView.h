// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <memory>

#include "platform/ViewController.h"

namespace velmora {

/// The hint of the first run, on the dark bubble of a popover. Main thread.
class popOverView : public ViewController {
 public:
  popOverView();
  ~popOverView() override;

  [[nodiscard]] QWidget &view() override { return *m_view; }

 private:
  std::unique_ptr<QWidget> m_view;
};

}  // namespace velmora
