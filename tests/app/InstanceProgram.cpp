// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A program of which there is to be one: says whether it is that, and what it is told, until its standard
// input ends. With an argument it only hands that on.
#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>

#include "app/SingleInstance.h"

int main(int argc, char **argv) {
  const QCoreApplication application(argc, argv);
  if (argc == 2) return velmora::SingleInstance::send(QString::fromUtf8(argv[1])) ? 0 : 1;
  const auto claim = velmora::SingleInstance::claim(
      [](const QString &command) { std::cout << "told " << command.toStdString() << std::endl; });
  std::cout << (claim ? "first" : "second") << std::endl;
  if (!claim) return 0;
  QSocketNotifier input(0, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
  return QCoreApplication::exec();
}
