// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/web/engine/WebPage.h"

#include <QWebEngineCertificateError>
#include <QWebEngineLoadingInfo>
#include <QWebEngineSettings>
#include <utility>

#include "platform/web/engine/OwnAuthority.h"

namespace velmora {
namespace {

/// What a server answers is a page to be shown, whatever its status; a load given up has another after it.
bool hasNothing(const QWebEngineLoadingInfo &load) {
  constexpr int kGivenUp = -3;
  return load.status() == QWebEngineLoadingInfo::LoadFailedStatus &&
         load.errorDomain() != QWebEngineLoadingInfo::HttpStatusCodeDomain && load.errorCode() != kGivenUp;
}

}  // namespace

bool isLocal(const QUrl &url) { return url.isLocalFile() || url.scheme() == QLatin1String("qrc"); }

WebPage::WebPage(QWebEngineProfile &profile, QString trustedRoots, WebEngineClient &client)
    : QWebEnginePage(&profile), m_trustedRoots(std::move(trustedRoots)), m_client(client) {
  QWebEngineSettings &wanted = *settings();
  // Stands in no window's way: a redirect to a port where nobody listens is what ends a sign-in.
  wanted.setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
  wanted.setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
  wanted.setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
  wanted.setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
  wanted.setAttribute(QWebEngineSettings::PluginsEnabled, false);
  wanted.setUnknownUrlSchemePolicy(QWebEngineSettings::DisallowUnknownUrlSchemes);
  connect(this, &QWebEnginePage::certificateError, this, &WebPage::decideAbout);
  connect(this, &QWebEnginePage::featurePermissionRequested, this, [this](const QUrl &origin, Feature what) {
    setFeaturePermission(origin, what, PermissionDeniedByUser);
  });
  connect(this, &QWebEnginePage::loadFinished, this, [this](bool loaded) { m_client.pageFinished(loaded); });
  connect(this, &QWebEnginePage::loadingChanged, this, [this](const QWebEngineLoadingInfo &load) {
    if (hasNothing(load)) m_client.pageFailed(load.url());
  });
}

bool WebPage::acceptNavigationRequest(const QUrl &target, NavigationType type, bool isMainFrame) {
  // What the program loads is typed; a page leads to local pages only from one.
  if (isLocal(target) && type != NavigationTypeTyped && !isLocal(url())) return false;
  const bool clicked = type == NavigationTypeLinkClicked;
  return !isMainFrame ||
         m_client.mayNavigate(clicked ? WebNavigationType::linkClicked : WebNavigationType::other, target);
}

QStringList WebPage::chooseFiles(FileSelectionMode, const QStringList &, const QStringList &) { return {}; }

/// What pages write there may hold secrets.
void WebPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &, int, const QString &) {
}

void WebPage::decideAbout(QWebEngineCertificateError error) const {
  if (error.type() == QWebEngineCertificateError::CertificateAuthorityInvalid &&
      isOfOwnAuthority(m_trustedRoots, error.certificateChain(), error.url().host())) {
    error.acceptCertificate();
  } else {
    error.rejectCertificate();
  }
}

}  // namespace velmora
