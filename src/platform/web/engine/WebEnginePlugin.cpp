// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/web/engine/WebEnginePlugin.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QOpenGLContext>
#include <QPalette>
#include <QWebEngineDownloadRequest>
#include <QWebEngineProfile>
#include <QWebEngineView>
#include <QtWebEngineQuick>
#include <utility>

#include "platform/web/engine/WebPage.h"

namespace velmora {
namespace {

constexpr auto kOwnerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

/// Lets pages that have dark colours show them on a dark desktop, of which the engine knows nothing by
/// itself. It reads this once, when it starts.
void preferTheDesktopsColours() {
  constexpr int kDark = 128;
  constexpr auto kFlags = "QTWEBENGINE_CHROMIUM_FLAGS";
  if (QGuiApplication::palette().color(QPalette::Window).lightness() < kDark)
    qputenv(kFlags, qgetenv(kFlags) + " --blink-settings=preferredColorScheme=0");
}

/// Draws without a graphics context where there can be none, which the engine would rather end by.
void drawWithWhatThereIs() {
  constexpr auto kBackend = "QT_QUICK_BACKEND";
  QOpenGLContext context;
  if (!qEnvironmentVariableIsSet(kBackend) && !context.create()) qputenv(kBackend, "software");
}

std::shared_ptr<QWebEngineProfile> makeProfile(const QString &folder) {
  QDir().mkpath(QFileInfo(folder).absolutePath());
  QDir().mkdir(folder, kOwnerOnly);
  QFile::setPermissions(folder, kOwnerOnly);
  auto profile = std::make_shared<QWebEngineProfile>(QStringLiteral("velmora"));
  profile->setPersistentStoragePath(folder);
  profile->setCachePath(folder);
  profile->setHttpAcceptLanguage(QLocale().bcp47Name());
  profile->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
  profile->setPersistentCookiesPolicy(QWebEngineProfile::AllowPersistentCookies);
  QObject::connect(profile.get(), &QWebEngineProfile::downloadRequested, profile.get(),
                   [](QWebEngineDownloadRequest *download) { download->cancel(); });
  return profile;
}

/// Kept to the end: one that is made anew would not find the cookies that the former is still writing.
std::shared_ptr<QWebEngineProfile> &theProfile() {
  static std::shared_ptr<QWebEngineProfile> profile;
  return profile;
}

class Engine : public WebEngine {
 public:
  Engine(std::shared_ptr<QWebEngineProfile> profile, const QString &trustedRoots, WebEngineClient &client)
      : m_profile(std::move(profile)), m_page(*m_profile, trustedRoots, client) {
    m_view.setPage(&m_page);
  }
  /// A page that goes reports the end of its load, to nobody.
  ~Engine() override { QObject::disconnect(&m_page, nullptr, &m_page, nullptr); }
  QWidget &widget() override { return m_view; }
  void load(const QUrl &url) override {
    // Pages of our own lie on the window; those of others count on white.
    const QWidget &ground = m_view.parentWidget() != nullptr ? *m_view.parentWidget() : m_view;
    m_page.setBackgroundColor(isLocal(url) ? ground.palette().color(QPalette::Window) : QColor(Qt::white));
    m_page.load(url);
  }

 private:
  // In this order: a page goes before its profile.
  std::shared_ptr<QWebEngineProfile> m_profile;
  WebPage m_page;
  QWebEngineView m_view;
};

}  // namespace

std::unique_ptr<WebEngine> WebEnginePlugin::make(const WebEngineSettings &settings, WebEngineClient &client) {
  // The engine draws with a graphics context shared by the whole program. Qt would rather make it at the
  // start, which costs 57 MB and as long as all the rest of it.
  std::shared_ptr<QWebEngineProfile> &profile = theProfile();
  if (!profile) {
    preferTheDesktopsColours();
    drawWithWhatThereIs();
    QtWebEngineQuick::initialize();
    profile = makeProfile(settings.storageFolder);
    // Writes the cookies. Runs before what the engine has registered meanwhile for its own end.
    qAddPostRoutine([] { theProfile().reset(); });
  }
  return std::make_unique<Engine>(profile, settings.trustedRoots, client);
}

}  // namespace velmora
