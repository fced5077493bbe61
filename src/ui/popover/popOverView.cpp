// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/popOverView.h"

#include "ui_popOverView.h"

namespace velmora {

popOverView::popOverView() : m_view(std::make_unique<QWidget>()) { Ui::popOverView().setupUi(m_view.get()); }

popOverView::~popOverView() = default;

}  // namespace velmora
