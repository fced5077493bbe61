// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QApplication>

#include "platform/Workspace.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "support/WebPages.h"
#include "ui/Page.h"
#include "ui/help/HelpWindow.h"

namespace velmora {
namespace {

using tests::engineIn;
using tests::runUntil;

TEST(HelpWindow, ShowsTheHelpAndOpensItsLinksElsewhere) {
  std::vector<std::string> opened;
  setUrlOpener([&](const QUrl &url) {
    opened.push_back(url.toString().toStdString());
    return true;
  });
  HelpWindow window;
  window.showWindow();
  EXPECT_TRUE(window.windowFlags() & Qt::WindowStaysOnTopHint);
  ASSERT_TRUE(runUntil([&] {
    return engineIn(window) && engineIn(window)->property("title") == QStringLiteral("Velmora Help");
  }));
  ASSERT_TRUE(runUntil([&] { return window.isActiveWindow(); }));
  // The links to chapters lead to the next one below; the last one of the page leads elsewhere.
  EXPECT_TRUE(runUntil([&] {
    EXPECT_TRUE(tests::xdotool({"key", "Tab", "Return"}));
    QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    return !opened.empty();
  }));
  setUrlOpener({});
  ASSERT_FALSE(opened.empty());
  EXPECT_EQ(opened.front(), "https://www.apache.org/licenses/LICENSE-2.0");
  const QUrl shown = engineIn(window)->property("url").toUrl();
  EXPECT_EQ(shown.adjusted(QUrl::RemoveFragment), pageNamed(QStringLiteral("Help")));
  EXPECT_TRUE(shown.hasFragment()) << "a chapter is no page of its own";
  EXPECT_TRUE(tests::xdotool({"key", "Escape"}));
  EXPECT_TRUE(runUntil([&] { return !window.isVisible(); }));
  EXPECT_TRUE(runUntil([&] { return !engineIn(window); })) << "it takes hundreds of megabytes";
}

}  // namespace
}  // namespace velmora
