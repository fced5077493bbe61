// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Shows one window on the present display and takes a picture of it, for people to look at.
//
//   velmora-windows [--dark] [--german] general|about|help|basic9|basic10 PICTURE.png
#include <QApplication>
#include <QLocale>
#include <QScreen>
#include <QTimer>
#include <cstdio>

#include "foundation/Deployment.h"
#include "gallery/Theme.h"
#include "platform/web/WebView.h"
#include "ui/Page.h"
#include "ui/Translations.h"
#include "ui/help/HelpWindow.h"
#include "ui/preferences/PreferencesWindowController.h"
#include "ui/shortcut/MASShortcutView.h"

namespace {

using namespace velmora;

constexpr QSize kFrame(10, 30);  // what a window manager adds, at the most
constexpr int kSettled = 3000;   // milliseconds; long after the page is there and the focus has come

std::unique_ptr<QWidget> windowOf(const QString &name, UserDefaults &defaults) {
  if (name == QLatin1String("help")) {
    auto help = std::make_unique<HelpWindow>();
    help->showWindow();
    help->resize(help->size().boundedTo(help->screen()->availableSize() - kFrame));
    return help;
  }
  if (name.startsWith(QLatin1String("basic"))) {
    auto page = std::make_unique<WebView>();
    page->resize(320, 120);
    page->load(pageNamed(name));
    page->show();
    return page;
  }
  const DeploymentLinks links{.forum = "https://forum.velmora.example/",
                              .fanPage = "https://fans.velmora.example/",
                              .microblog = "https://social.velmora.example/@velmora",
                              .home = "https://velmora.example/"};
  auto preferences =
      std::make_unique<PreferencesWindowController>(ApplicationInformation::ofThisBuild(links), defaults);
  preferences->shortcutView().setShortcutValue(MASShortcut(122, shortcut_modifier::kCommand));
  preferences->showWindow();
  if (name == QLatin1String("about")) preferences->AboutTabClick();
  return preferences;
}

}  // namespace

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() < 3) return 2;
  tests::setTheme(arguments.contains(QStringLiteral("--dark")));
  if (arguments.contains(QStringLiteral("--german"))) installTranslations(QLocale(QLocale::German));
  UserDefaults defaults;
  defaults.setObject(true, QStringLiteral("logged_in"));
  const auto window = windowOf(arguments.at(arguments.size() - 2), defaults);
  bool saved = false;
  QTimer::singleShot(kSettled, [&] {
    saved = window->screen()->grabWindow(window->winId()).save(arguments.last(), "PNG");
    QApplication::quit();
  });
  QApplication::exec();
  if (!saved) std::fprintf(stderr, "windows: %s cannot be written\n", qPrintable(arguments.last()));
  return saved ? 0 : 1;
}
