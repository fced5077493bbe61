// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Shows one window on the present display and takes a picture of it, for people to look at.
//
//   velmora-windows [--dark] [--german] general|about|recorder|help|basic9|basic10 PICTURE.png
#include <QApplication>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <chrono>
#include <cstdio>

#include "foundation/Deployment.h"
#include "foundation/MainQueue.h"
#include "gallery/Theme.h"
#include "platform/web/WebView.h"
#include "ui/Page.h"
#include "ui/Translations.h"
#include "ui/help/HelpWindow.h"
#include "ui/preferences/PreferencesWindowController.h"
#include "ui/shortcut/MASShortcutView.h"

namespace velmora {
namespace {

const MASShortcut kCommandF1(122, shortcut_modifier::kCommand);
constexpr QSize kFrame(10, 30);  // what a window manager adds, at the most
constexpr int kSettled = 3000;   // milliseconds; long after the page is there and the focus has come

/// The states of the shortcut recorder, beside a push button of the desktop's.
std::unique_ptr<QWidget> recorders() {
  struct Row {
    const char *label;
    bool value, recording, hinting;
  };
  constexpr Row kRows[] = {{"no value", false, false, false},    {"no value, recording", false, true, false},
                           {"over the hint", false, true, true}, {"value", true, false, false},
                           {"over the hint", true, false, true}, {"value, recording", true, true, false},
                           {"over the hint", true, true, true},  {"disabled", true, false, false}};
  auto window = std::make_unique<QWidget>();
  auto *layout = new QFormLayout(window.get());
  layout->addRow(QStringLiteral("a push button"), new QPushButton(QStringLiteral("Sign Out")));
  for (const Row &row : kRows) {
    // One view records at a time: each is painted when it does.
    MASShortcutView view;
    if (row.value) view.setShortcutValue(kCommandF1);
    view.setEnabled(QLatin1String(row.label) != QLatin1String("disabled"));
    view.resize(view.sizeHint());
    view.setAttribute(Qt::WA_DontShowOnScreen);
    view.show();
    if (row.recording) view.setRecording(true);
    if (row.hinting) {
      const QPointF place = view.hintRect().center();
      QMouseEvent move(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(&view, &move);
    }
    auto *picture = new QLabel;
    picture->setPixmap(view.grab());
    layout->addRow(QString::fromLatin1(row.label), picture);
  }
  window->show();
  return window;
}

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
  if (name == QLatin1String("recorder")) return recorders();
  const DeploymentLinks links{.forum = "https://forum.velmora.example/",
                              .fanPage = "https://fans.velmora.example/",
                              .microblog = "https://social.velmora.example/@velmora",
                              .home = "https://velmora.example/"};
  auto preferences =
      std::make_unique<PreferencesWindowController>(ApplicationInformation::ofThisBuild(links), defaults);
  preferences->shortcutView().setShortcutValue(kCommandF1);
  preferences->showWindow();
  if (name == QLatin1String("about")) preferences->AboutTabClick();
  return preferences;
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() < 3) return 2;
  velmora::tests::setTheme(arguments.contains(QStringLiteral("--dark")));
  if (arguments.contains(QStringLiteral("--german"))) velmora::installTranslations(QLocale(QLocale::German));
  velmora::UserDefaults defaults;
  defaults.setObject(true, QStringLiteral("logged_in"));
  const auto window = velmora::windowOf(arguments.at(arguments.size() - 2), defaults);
  bool saved = false;
  const velmora::Alive alive;
  velmora::MainQueue::main().after(std::chrono::milliseconds(velmora::kSettled), alive, [&] {
    saved = window->screen()->grabWindow(window->winId()).save(arguments.last(), "PNG");
    QApplication::quit();
  });
  QApplication::exec();
  if (!saved) std::fprintf(stderr, "windows: %s cannot be written\n", qPrintable(arguments.last()));
  return saved ? 0 : 1;
}
