// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Shows what there is to see on the present display and takes a picture of it, for people to look at.
//
//   velmora-gallery [--dark] [--composited] PICTURE.png      the latter waits for a compositor first
#include <QApplication>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QThread>
#include <QTimer>
#include <cstdio>

#include "gallery/Theme.h"
#include "platform/window/Compositor.h"
#include "ui/popover/INPopoverController.h"
#include "ui/popover/Popover.h"
#include "ui/popover/popOverView.h"
#include "ui/waveform/SpeechWaveformView.h"
#include "ui/waveform/WaveformView.h"

namespace velmora {
namespace {

constexpr QRect kScene(0, 0, 600, 380);
constexpr QRect kStatusItem(130, 2, 22, 22);
constexpr QRect kOtherItem(410, 2, 22, 22);

/// A desktop with a status bar.
class Desktop : public QWidget {
 public:
  explicit Desktop(bool dark) : QWidget(nullptr, Qt::FramelessWindowHint), m_dark(dark) {
    setAttribute(Qt::WA_X11NetWmWindowTypeDesktop);
    setGeometry(QGuiApplication::primaryScreen()->geometry());
  }

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
};

class Form : public ViewController {
 public:
  Form() {
    auto *layout = new QFormLayout(&m_view);
    auto *name = new QLineEdit(&m_view);
    name->setPlaceholderText(QStringLiteral("Ada"));
    layout->addRow(QStringLiteral("&Name"), name);
    layout->addRow(QStringLiteral("&Place"), new QLineEdit(QStringLiteral("London"), &m_view));
    layout->addRow(new QPushButton(QStringLiteral("&Sign in"), &m_view));
    m_view.resize(220, layout->sizeHint().height());
  }
  QWidget &view() override { return m_view; }

 private:
  QWidget m_view;
};

/// Both wave views, side by side.
class Waves : public QWidget {
 public:
  Waves() : QWidget(nullptr, Qt::FramelessWindowHint), m_speech(this), m_level(this) {
    setGeometry(20, 200, 560, 160);
    QPalette own = palette();
    own.setColor(QPalette::Window, QColor(71, 72, 72));
    setPalette(own);
    m_speech.setGeometry(0, 0, 280, 160);
    m_level.setGeometry(280, 0, 280, 160);
    m_level.setWaveColor(QColor(120, 200, 255));
    m_level.updateWithLevel(0.9);
  }

 private:
  SpeechWaveformView m_speech;
  WaveformView m_level;
};

int show(int argc, char **argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  const bool dark = arguments.contains(QStringLiteral("--dark"));
  tests::setTheme(dark);
  if (arguments.contains(QStringLiteral("--composited"))) {
    while (!desktopIsComposited()) QThread::msleep(20);
  }
  Desktop desktop(dark);
  Waves waves;
  desktop.show();
  waves.show();

  Form form;
  Popover popover;
  popover.setContentViewController(&form);
  popover.show(kStatusItem, nullptr);
  popOverView hint;
  INPopoverController first(&hint);
  first.setClosesWhenPopoverResignsKey(false);
  first.presentPopoverFromRect(kOtherItem, nullptr, ArrowDirection::up, false);

  int status = 1;
  // Long after the animations and the first frame of everybody.
  QTimer last;
  last.setSingleShot(true);
  QObject::connect(&last, &QTimer::timeout, [&] {
    QScreen *screen = QGuiApplication::primaryScreen();
    const QPixmap all = screen->grabWindow(0);
    const double scale = all.deviceIndependentSize().width() > 0 ? all.devicePixelRatio() : 1;
    const QPixmap picture = all.copy(QRect(kScene.topLeft(), kScene.size() * scale));
    if (picture.save(arguments.last(), "PNG")) status = 0;
    QApplication::quit();
  });
  last.start(2500);
  QApplication::exec();
  if (status != 0) std::fprintf(stderr, "gallery: %s cannot be written\n", qPrintable(arguments.last()));
  return status;
}

}  // namespace
}  // namespace velmora

int main(int argc, char **argv) { return velmora::show(argc, argv); }
