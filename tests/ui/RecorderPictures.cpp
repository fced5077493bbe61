// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
// Paints the states of the shortcut recorder beside a push button of the platform's: what
// scripts/recorder-pictures keeps in docs/. Not a test.
//   recorder_pictures light|dark FILE.png
#include <QApplication>
#include <QGridLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyleFactory>
#include <QTimer>

#include "ui/shortcut/MASShortcutView.h"

namespace {

QPalette darkPalette() {
  QPalette palette(QColor(0x35, 0x35, 0x35), QColor(0x2a, 0x2a, 0x2a));
  palette.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
  return palette;
}

}  // namespace

int main(int argc, char **argv) {
  QApplication application(argc, argv);
  if (application.arguments().size() != 3) return 2;
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("fusion")));
  if (application.arguments().at(1) == QLatin1String("dark")) QApplication::setPalette(darkPalette());

  const velmora::MASShortcut shortcut(122, velmora::shortcut_modifier::kCommand);
  struct Row {
    const char *label;
    bool value, recording, hinting;
  };
  constexpr Row kRows[] = {{"no value", false, false, false},    {"no value, recording", false, true, false},
                           {"over the hint", false, true, true}, {"value", true, false, false},
                           {"over the hint", true, false, true}, {"value, recording", true, true, false},
                           {"over the hint", true, true, true},  {"disabled", true, false, false}};
  QWidget window;
  QGridLayout layout(&window);
  layout.addWidget(new QLabel(QStringLiteral("a push button")), 0, 0);
  layout.addWidget(new QPushButton(QStringLiteral("Sign Out")), 0, 1);
  // One view records at a time: each row is painted when it does.
  int line = 1;
  for (const Row &row : kRows) {
    auto *view = new velmora::MASShortcutView;
    if (row.value) view->setShortcutValue(shortcut);
    view->setEnabled(QLatin1String(row.label) != QLatin1String("disabled"));
    view->resize(view->sizeHint());
    auto *picture = new QLabel;
    view->setAttribute(Qt::WA_DontShowOnScreen);
    view->show();
    if (row.recording) view->setRecording(true);
    if (row.hinting) {
      const QPointF place = view->hintRect().center();
      QMouseEvent move(QEvent::MouseMove, place, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(view, &move);
    }
    picture->setPixmap(view->grab());
    delete view;
    layout.addWidget(new QLabel(QString::fromLatin1(row.label)), line, 0);
    layout.addWidget(picture, line++, 1);
  }
  window.adjustSize();
  return window.grab().save(application.arguments().at(2)) ? 0 : 1;
}
