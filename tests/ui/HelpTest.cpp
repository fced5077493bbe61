// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QApplication>
#include <QFile>
#include <QRegularExpression>

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

TEST(Pages, LoadNothingFromOutsideAndMissNothing) {
  for (const char *name : {"Help", "basic9", "basic10"}) {
    const QUrl page = pageNamed(QString::fromLatin1(name));
    QFile file(QLatin1Char(':') + page.path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    const QString text = QString::fromUtf8(file.readAll());
    EXPECT_FALSE(text.contains(QStringLiteral("url("))) << name;
    static const QRegularExpression kLoaded(QStringLiteral("(?:src|srcset)=\"([^\"]*)\""));
    for (auto found = kLoaded.globalMatch(text); found.hasNext();) {
      const QUrl part = page.resolved(QUrl(found.next().captured(1)));
      EXPECT_EQ(part.scheme(), QStringLiteral("qrc"));
      EXPECT_TRUE(QFile::exists(QLatin1Char(':') + part.path())) << part.toString().toStdString();
    }
  }
  EXPECT_FALSE(pageNamed(QStringLiteral("none")).isValid());
}

}  // namespace
}  // namespace velmora
