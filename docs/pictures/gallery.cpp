// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Shows something on the present display and takes a picture of it, for people to look at.
//
//   velmora-gallery [--dark] [--german] [--composited] popover|general|about|recorder|help PICTURE.png
//
// With --composited it waits for a compositor first.
#include <QApplication>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <cstdio>

#include "foundation/Deployment.h"
#include "platform/window/Compositor.h"
#include "support/Theme.h"
#include "ui/Translations.h"
#include "ui/help/HelpWindow.h"
#include "ui/popover/INPopoverController.h"
#include "ui/popover/Popover.h"
#include "ui/popover/popOverView.h"
#include "ui/preferences/PreferencesWindowController.h"
#include "ui/shortcut/MASShortcutView.h"
#include "ui/waveform/SpeechWaveformView.h"
#include "ui/waveform/WaveformView.h"

namespace velmora {
namespace {

constexpr QRect kScene(0, 0, 600, 380);
constexpr QRect kStatusItem(130, 2, 22, 22);
constexpr QRect kOtherItem(410, 2, 22, 22);
const MASShortcut kCommandF1(122, shortcut_modifier::kCommand);
constexpr QSize kFrame(10, 30);  // what a window manager adds, at the most
constexpr int kSettled = 3000;   // milliseconds; long after the animations, a page and the focus have come

/// A desktop with a status bar, two popovers and both wave views.
class Desktop : public QWidget, public ViewController {
 public:
  explicit Desktop(bool dark) : QWidget(nullptr, Qt::FramelessWindowHint), m_dark(dark) {
    setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
    setGeometry(QGuiApplication::primaryScreen()->geometry());
    auto *const waves = new QWidget(this);
    waves->setGeometry(20, 200, 560, 160);
    waves->setAutoFillBackground(true);
    waves->setPalette(QColor(71, 72, 72));
    auto *const speech = new SpeechWaveformView(waves);
    speech->setGeometry(0, 0, 280, 160);
    auto *const level = new WaveformView(waves);
    level->setGeometry(280, 0, 280, 160);
    level->setWaveColor(QColor(120, 200, 255));
    level->updateWithLevel(0.9);
    show();
    auto *const layout = new QFormLayout(&m_form);
    auto *const name = new QLineEdit;
    name->setPlaceholderText(QStringLiteral("Ada"));
    layout->addRow(QStringLiteral("&Name"), name);
    layout->addRow(QStringLiteral("&Place"), new QLineEdit(QStringLiteral("London")));
    layout->addRow(new QPushButton(QStringLiteral("&Sign in")));
    m_form.resize(220, layout->sizeHint().height());
    m_popover.setContentViewController(this);
    m_popover.show(kStatusItem, nullptr);
    m_first.setClosesWhenPopoverResignsKey(false);
    m_first.presentPopoverFromRect(kOtherItem, nullptr, ArrowDirection::up, false);
  }
  QWidget &view() override { return m_form; }

 protected:
  void paintEvent(QPaintEvent *) override {
    QPainter painter(this);
    QLinearGradient colors(kScene.topLeft(), kScene.bottomRight());
    colors.setColorAt(0, m_dark ? QColor(24, 40, 60) : QColor(150, 190, 225));
    colors.setColorAt(1, m_dark ? QColor(70, 40, 70) : QColor(235, 215, 190));
    painter.fillRect(rect(), colors);
    painter.fillRect(0, 0, width(), 26, palette().window());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(palette().windowText());
    for (const QRect &item : {kStatusItem, kOtherItem}) painter.drawEllipse(item.adjusted(5, 5, -5, -5));
  }

 private:
  bool m_dark;
  QWidget m_form;
  popOverView m_hint;
  Popover m_popover;
  INPopoverController m_first{&m_hint};
};

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

std::unique_ptr<QWidget> windowOf(const QString &name, bool dark, UserDefaults &defaults) {
  if (name == QLatin1String("popover")) return std::make_unique<Desktop>(dark);
  if (name == QLatin1String("recorder")) return recorders();
  if (name == QLatin1String("help")) {
    auto help = std::make_unique<HelpWindow>();
    help->showWindow();
    help->resize(help->size().boundedTo(help->screen()->availableSize() - kFrame));
    return help;
  }
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

int show(const QStringList &arguments) {
  const bool dark = arguments.contains(QStringLiteral("--dark"));
  tests::setTheme(dark);
  if (arguments.contains(QStringLiteral("--german"))) installTranslations(QLocale(QLocale::German));
  if (arguments.contains(QStringLiteral("--composited"))) {
    while (!desktopIsComposited()) QThread::msleep(20);
  }
  UserDefaults defaults;
  defaults.setObject(true, QStringLiteral("logged_in"));
  const QString &name = arguments.at(arguments.size() - 2);
  const auto window = windowOf(name, dark, defaults);
  bool saved = false;
  QTimer timer;
  timer.setSingleShot(true);
  QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
    QPixmap picture = window->screen()->grabWindow(name == QLatin1String("popover") ? 0 : window->winId());
    if (name == QLatin1String("popover"))
      picture = picture.copy(QRect(kScene.topLeft(), kScene.size() * picture.devicePixelRatio()));
    saved = picture.save(arguments.last(), "PNG");
    QApplication::quit();
  });
  timer.start(kSettled);
  QApplication::exec();
  if (!saved) std::fprintf(stderr, "gallery: %s cannot be written\n", qPrintable(arguments.last()));
  return saved ? 0 : 1;
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) {
  const QApplication application(argc, argv);
  return argc < 3 ? 2 : velmora::show(QApplication::arguments());
}
