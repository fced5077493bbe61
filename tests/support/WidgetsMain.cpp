// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The main function of tests that have windows or need the main thread's event loop: no display, and a home
// of their own.
#include <gtest/gtest.h>

#include <QApplication>

#include "support/TemporaryFolder.h"

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  const velmora::tests::TemporaryFolder home;
  for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_STATE_HOME"}) {
    qputenv(name, home.path().c_str());
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
