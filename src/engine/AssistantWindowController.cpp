// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/AssistantWindowController.h"

#include <QBoxLayout>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

#include "foundation/Log.h"
#include "platform/window/WindowSize.h"
#include "ui/AssisView.h"
#include "ui/Page.h"
#include "ui_AssistantView.h"

namespace velmora {
namespace {

constexpr int kGap = 8;  // logical pixels between the window and what it is put at, and the screen's edges
constexpr int kRingSize = 52;
constexpr int kDotsWidth = 124;

}  // namespace

AssistantWindowController::AssistantWindowController(AssistantHost &host, UserDefaults &defaults)
    : AssistantScreen(host, defaults) {
  // A status-bar program goes on without a window.
  setAttribute(Qt::WA_QuitOnClose, false);
}

void AssistantWindowController::showWindow(const QRect &anchor) {
  if (!isViewLoaded()) {
    viewDidLoad();
    boundToScreen(*this);
    placeAt(anchor);
  }
  if (isMinimized()) setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

void AssistantWindowController::placeAt(const QRect &anchor) {
  if (anchor.isNull()) return;
  const QScreen *screen = QGuiApplication::screenAt(anchor.center());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  const QRect all = screen->availableGeometry().adjusted(kGap, kGap, -kGap, -kGap);
  QRect frame(QPoint(), size());
  frame.moveCenter(anchor.center());
  const bool isInUpperHalf = anchor.center().y() < screen->geometry().center().y();
  isInUpperHalf ? frame.moveTop(anchor.bottom() + kGap) : frame.moveBottom(anchor.top() - kGap);
  move(std::clamp(frame.left(), all.left(), std::max(all.left(), all.right() - frame.width())),
       std::clamp(frame.top(), all.top(), std::max(all.top(), all.bottom() - frame.height())));
}

void AssistantWindowController::loadPages() {
  auto &layout = *outlets().stageLayout;
  m_assisView = new AssisView(outlets().stage);
  layout.addWidget(m_assisView, 0, 0, 2, 2);
  m_assisView->lower();
  m_myWebview2 = new WebView(outlets().stage);
  m_myWebview2->setFixedSize(kRingSize, kRingSize);
  m_myWebview2->setFocusPolicy(Qt::NoFocus);
  outlets().myWebview->setFixedWidth(kDotsWidth);
  auto *const row = new QHBoxLayout;  // both pages in the middle, side by side
  row->addStretch();
  row->addWidget(m_myWebview2);
  row->addWidget(outlets().myWebview);
  row->addStretch();
  layout.addLayout(row, 1, 0, 1, 2);
  AssistantScreen::loadPages();
  QPalette colors = palette();
  colors.setColor(QPalette::Window, Qt::white);
  outlets().myWebview->setPalette(colors);
  m_myWebview2->setPalette(colors);
  m_myWebview2->load(pageNamed(QStringLiteral("basic10")));
}

void AssistantWindowController::setPagesHidden(bool hidden) {
  AssistantScreen::setPagesHidden(hidden);
  m_myWebview2->setHidden(hidden);
}

void AssistantWindowController::unloadPages() {
  AssistantScreen::unloadPages();
  m_myWebview2->unload();
}

void AssistantWindowController::listeningStarted() { log("audio listening.."); }

}  // namespace velmora
