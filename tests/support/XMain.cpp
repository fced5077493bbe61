// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The main function of tests that need a desktop: an X server, a window manager and a home of their own.
#include <gtest/gtest.h>

#include <QApplication>
#include <algorithm>
#include <optional>
#include <string_view>

#include "support/XDisplay.h"

int main(int argc, char **argv) {
  const bool lists = std::any_of(argv, argv + argc, [](std::string_view argument) {
    return argument.starts_with("--gtest_list_tests");
  });
  testing::InitGoogleTest(&argc, argv);
  if (lists) return RUN_ALL_TESTS();
  const velmora::tests::XDisplay display;
  if (!display.runs()) return 1;
  qputenv("QT_QPA_PLATFORM", "xcb");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
