// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/web/WebView.h"

#include <QCoreApplication>
#include <QLabel>
#include <QPluginLoader>
#include <QStackedLayout>
#include <QStandardPaths>

#include "foundation/Log.h"

namespace velmora {
namespace {

struct Decision final : WebPolicyListener {
  void use() override { used = true; }
  void ignore() override { used = false; }
  bool used = false;
};

}  // namespace

WebView::WebView(QWidget *parent, const QString &engineFile)
    : QWidget(parent), m_engineFile(engineFile), m_layout(new QStackedLayout(this)), m_notice(new QLabel) {
  m_notice->setAlignment(Qt::AlignCenter);
  m_notice->setWordWrap(true);
  m_layout->addWidget(m_notice);
}

WebView::~WebView() = default;

QString WebView::defaultEngineFile() {
  return QCoreApplication::applicationDirPath() + QLatin1String("/" VELMORA_WEB_ENGINE);
}

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

bool WebView::mayNavigate(const QUrl &url) {
  if (!m_delegate) return true;
  Decision decision;
  m_deciding = true;
  m_delegate->decidePolicyForNavigationAction(*this, url, decision);
  m_deciding = false;
  return decision.used && !m_wanted;
}

void WebView::pageFinished(bool loaded) { Q_EMIT loadFinished(loaded); }

void WebView::loadWanted() {
  if (!m_wanted || !isVisible()) return;
  if (!m_engine && !makeEngine()) return;
  m_wanted = false;
  m_engine->load(m_page);
}

bool WebView::makeEngine() {
  QPluginLoader plugin(m_engineFile);
  auto *factory = qobject_cast<WebEngineFactory *>(plugin.instance());
  if (!factory) {
    const QString reason = plugin.isLoaded() ? QStringLiteral("it is none") : plugin.errorString();
    log("The web engine cannot be loaded: ", reason.toStdString());
    m_wanted = false;
    m_notice->setText(tr("Web pages cannot be shown: the web engine is not installed."));
    Q_EMIT engineMissing(reason);
    return false;
  }
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  m_engine = factory->make(
      {.storageFolder = folder + QLatin1String("/velmora/web"), .trustedRoots = m_trustedRoots}, *this);
  QWidget &widget = m_engine->widget();
  m_layout->setCurrentIndex(m_layout->addWidget(&widget));
  setFocusProxy(&widget);
  return true;
}

}  // namespace velmora
