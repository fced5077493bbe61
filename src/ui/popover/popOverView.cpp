// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/popover/popOverView.h"

#include "ui_popOverView.h"

namespace velmora {

popOverView::popOverView() : m_view(std::make_unique<QWidget>()) {
  Ui::popOverView().setupUi(m_view.get());
  // As high as its words are in this language and font.
  m_view->ensurePolished();
  m_view->resize(m_view->width(), m_view->heightForWidth(m_view->width()));
}

popOverView::~popOverView() = default;

}  // namespace velmora
