// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The main function of tests that have windows, show web pages or need the main thread's event loop: no
// display but the one they were given, no sandbox for root, and a home of their own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <optional>

#include "support/TemporaryFolder.h"

#if defined(VELMORA_SHOWS_PAGES) && defined(__SANITIZE_ADDRESS__)
// The engine deletes objects of its own as another type than it made them.
extern "C" const char *__asan_default_options() { return "new_delete_type_mismatch=0"; }
#elif defined(VELMORA_SHOWS_PAGES) && defined(__SANITIZE_THREAD__)
// The engine forks a process that starts threads of its own.
extern "C" const char *__tsan_default_options() { return "die_after_fork=0"; }
#endif

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  // A test that starts itself anew shares its home with that.
  std::optional<velmora::tests::TemporaryFolder> home;
  if (qEnvironmentVariableIsEmpty("VELMORA_TEST_HOME")) {
    home.emplace();
    for (const char *name : {"VELMORA_TEST_HOME", "HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME",
                             "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
      qputenv(name, home->path().c_str());
    }
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
#if defined(__SANITIZE_ADDRESS__)
  // The graphics drivers leak.
  qputenv("QT_XCB_GL_INTEGRATION", "none");
  qputenv("QT_QUICK_BACKEND", "software");
#endif
  // Chromium does not run as root in its sandbox.
  if (::getuid() == 0) qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
  qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu");
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
