// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/web/WebView.h"

#include <QLabel>
#include <QLoggingCategory>
#include <QPushButton>
#include <QScopeGuard>
#include <QStackedLayout>
#include <QStandardPaths>
#include <QVBoxLayout>

#include "foundation/Log.h"
#include "platform/Plugin.h"

namespace velmora {
namespace {

constexpr int kNoticeMargin = 24;  // logical pixels

struct Decision final : WebPolicyListener {
  void use() override { used = true; }
  void ignore() override { used = false; }
  bool used = false;
};

}  // namespace

WebView::WebView(QWidget *parent, const QString &engineFile)
    : QWidget(parent),
      m_engineFile(engineFile),
      m_layout(new QStackedLayout(this)),
      m_notice(new QWidget),
      m_noticeText(new QLabel),
      m_tryAgain(new QPushButton(tr("&Try again"))) {
  m_noticeText->setAlignment(Qt::AlignCenter);
  m_noticeText->setWordWrap(true);
  m_noticeText->setTextFormat(Qt::PlainText);
  m_tryAgain->setAutoDefault(true);
  m_tryAgain->hide();
  auto *column = new QVBoxLayout(m_notice);
  column->setContentsMargins(kNoticeMargin, kNoticeMargin, kNoticeMargin, kNoticeMargin);
  column->setSpacing(kNoticeMargin / 2);
  column->addStretch();
  column->addWidget(m_noticeText);
  column->addWidget(m_tryAgain, 0, Qt::AlignHCenter);
  column->addStretch();
  m_layout->addWidget(m_notice);
  connect(m_tryAgain, &QPushButton::clicked, this, [this] { load(m_page); });
}

WebView::~WebView() = default;

void WebView::setTrustedRoots(const std::filesystem::path &file) {
  m_trustedRoots = QString::fromStdString(file.string());
}

void WebView::load(const QUrl &url) {
  m_page = url;
  m_wanted = true;
  // The engine cannot go elsewhere while it waits for a decision.
  if (m_deciding) return MainQueue::main().async(m_alive, [this] { loadWanted(); });
  loadWanted();
}

void WebView::showFailure() { showNotice(tr("The page at %1 cannot be loaded.").arg(m_page.host()), true); }

void WebView::unload() {
  MainQueue::main().async(m_alive, [this] {
    if (isVisible() || !m_engine) return;
    m_engine.reset();
    m_wanted = true;
  });
}

void WebView::showEvent(QShowEvent *event) {
  QWidget::showEvent(event);
  loadWanted();
}

bool WebView::mayNavigate(WebNavigationType type, const QUrl &url) {
  if (!m_delegate) return true;
  Decision decision;
  m_deciding = true;
  m_delegate->decidePolicyForNavigationAction(*this, type, url, decision);
  m_deciding = false;
  return decision.used && !m_wanted;
}

void WebView::pageFinished(bool loaded) { Q_EMIT loadFinished(loaded); }

void WebView::pageFailed(const QUrl &url) {
  if (m_frameLoadDelegate && !m_wanted) m_frameLoadDelegate->didFailLoad(*this, url);
}

void WebView::loadWanted() {
  if (!m_wanted || !isVisible()) return;
  if (!m_engine && !makeEngine()) return;
  m_wanted = false;
  showPage();
  m_engine->load(m_page);
}

bool WebView::makeEngine() {
  // The engine complains of being loaded so late, which is what spares everybody its weight who shows no
  // page, and tells what the graphics driver is like.
  QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false\nqt.webenginecontext=false"));
  const auto heardAgain = qScopeGuard([] { QLoggingCategory::setFilterRules({}); });
  const Plugin plugin = m_engineFile.isEmpty() ? Plugin("velmora-web-engine") : Plugin(m_engineFile);
  std::string reason;
  auto *factory = plugin.root<WebEngineFactory>(reason);
  if (!factory) {
    log("The web engine cannot be loaded: ", reason);
    m_wanted = false;
    showNotice(tr("Web pages cannot be shown: the web engine is not installed."), false);
    Q_EMIT engineMissing(QString::fromStdString(reason));
    return false;
  }
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  m_engine = factory->make(
      {.storageFolder = folder + QLatin1String("/velmora/web"), .trustedRoots = m_trustedRoots}, *this);
  m_layout->addWidget(&m_engine->widget());
  return true;
}

/// Whether the keys go here as soon as the window is the active one.
bool WebView::holdsFocus() const {
  const QWidget *focus = window()->focusWidget();
  return focus && (focus == this || isAncestorOf(focus));
}

void WebView::showPage() {
  QWidget &page = m_engine->widget();
  const bool hadFocus = holdsFocus();
  m_layout->setCurrentWidget(&page);
  setFocusProxy(&page);
  if (hadFocus) page.setFocus();
}

void WebView::showNotice(const QString &text, bool mayTryAgain) {
  const bool hadFocus = holdsFocus();
  m_noticeText->setText(text);
  m_tryAgain->setAccessibleDescription(text);
  m_tryAgain->setVisible(mayTryAgain);
  setFocusProxy(mayTryAgain ? m_tryAgain : nullptr);
  m_layout->setCurrentWidget(m_notice);
  if (hadFocus && mayTryAgain) m_tryAgain->setFocus();
}

}  // namespace velmora
