// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The least that shows an icon in a panel: what bench_start holds the application against.
#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QSystemTrayIcon>

int main(int argc, char **argv) {
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  QPixmap square(22, 22);
  square.fill(Qt::white);
  QSystemTrayIcon icon{QIcon(square)};
  icon.show();
  return QApplication::exec();
}
