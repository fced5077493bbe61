// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <QApplication>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QTranslator>
#include <map>

#include "platform/Workspace.h"
#include "support/EventLoop.h"
#include "support/OtherProgram.h"
#include "support/WebPages.h"
#include "ui/Page.h"
#include "ui/Translations.h"
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

/// What the tags of a page that fit `pattern` hold, in their order.
QStringList found(const QString &page, const char *pattern) {
  QStringList all;
  const QRegularExpression expression(QString::fromLatin1(pattern));
  for (auto each = expression.globalMatch(page); each.hasNext();) all << each.next().captured(1);
  return all;
}

QString contents(const QUrl &page) {
  QFile file(QLatin1Char(':') + page.path());
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

TEST(Pages, AreInTheInterfacesLanguageLoadNothingFromOutsideAndMissNothing) {
  std::map<std::string, QStringList> shapes;
  for (const char *language : {"fr", "de"}) {
    EXPECT_EQ(installTranslations(QLocale(QString::fromLatin1(language))), *language == 'd');
    for (const char *name : {"Help", "basic9", "basic10"}) {
      const QUrl page = pageNamed(QString::fromLatin1(name));
      const QString text = contents(page);
      EXPECT_EQ(found(text, "<html lang=\"(..)\"").value(0), interfaceLanguage()) << name;
      EXPECT_FALSE(text.contains(QStringLiteral("url(")) || text.contains(QStringLiteral("style="))) << name;
      for (const QString &part : found(text, "(?:src|srcset|link [^>]*href)=\"([^\"]*)\"")) {
        const QUrl url = page.resolved(QUrl(part));
        EXPECT_EQ(url.scheme(), QStringLiteral("qrc"));
        EXPECT_TRUE(QFile::exists(QLatin1Char(':') + url.path())) << part.toStdString();
      }
      EXPECT_EQ(found(text, "<a href=\"#([^\"]*)\""), found(text, "<h2 id=\"([^\"]*)\""));
      const QStringList shape = found(text, "<(h2|ul|ol|li|dt|dd|tr|td|img|i)\\b");
      EXPECT_EQ(shapes.try_emplace(name, shape).first->second, shape)
          << name << " tells less in " << language;
    }
  }
  EXPECT_FALSE(pageNamed(QStringLiteral("none")).isValid());
  qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator *>());
}

}  // namespace
}  // namespace velmora
