// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/web/WebView.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QStandardPaths>

#include "support/EventLoop.h"
#include "support/TemporaryFolder.h"
#include "support/WebPages.h"

namespace velmora {
namespace {

using testing::ElementsAre;
using tests::countOf;
using tests::engineIn;
using tests::HttpRequest;
using tests::HttpServer;
using tests::page;
using tests::runUntil;

struct WebViewTest : testing::Test, WebPolicyDelegate {
  void decidePolicyForNavigationAction(WebView &, WebNavigationType, const QUrl &request,
                                       WebPolicyListener &listener) override {
    asked.push_back(request.toEncoded().toStdString());
    if (!request.path().startsWith(QLatin1String("/ignored"))) listener.use();
  }
  /// Shows a page and waits for its end.
  bool shows(WebView &view, const std::string &url) {
    std::optional<bool> finished;
    QObject context;
    QObject::connect(&view, &WebView::loadFinished, &context, [&](bool ok) { finished = ok; });
    view.load(QUrl(QString::fromStdString(url)));
    view.show();
    EXPECT_TRUE(runUntil([&] { return finished.has_value(); })) << url;
    return finished.value_or(false);
  }

  std::vector<std::string> asked;
  tests::TemporaryFolder folder;
};

TEST_F(WebViewTest, AsksAboutTheMainFrameOnlyAndObeys) {
  const HttpServer server([](const HttpRequest &) {
    return page(
        "<iframe src=/frame></iframe><script>if (top === self) {"
        "location.href = '/ignored'; setTimeout(() => fetch('/done'), 0); }</script>");
  });
  WebView view;
  view.setPolicyDelegate(this);
  shows(view, server.url("/start"));
  EXPECT_TRUE(runUntil([&] { return countOf(server, "GET /done") > 0; }));
  EXPECT_THAT(asked, ElementsAre(server.url("/start"), server.url("/ignored")));
  EXPECT_EQ(countOf(server, "GET /ignored"), 0);
}

TEST_F(WebViewTest, PagesReachNoFilesAndOpenNoWindows) {
  const std::string url = "file://" + folder.write("secret.html", "<title>secret</title>").string();
  const HttpServer server([url](const HttpRequest &) {
    return page("<script>const url = '" + url +
                "';"
                "addEventListener('load', async () => {"
                "fetch(url).then(() => fetch('/leak')).catch(() => {});"
                "if (window.open('/window')) await fetch('/leak');"
                "location.href = url;"
                "setTimeout(() => fetch('/done'), 100);"
                "})</script>");
  });
  WebView view;
  view.setPolicyDelegate(this);
  shows(view, server.url("/start"));
  EXPECT_TRUE(runUntil([&] { return countOf(server, "GET /done") > 0; }));
  EXPECT_EQ(countOf(server, "GET /leak"), 0);
  EXPECT_EQ(countOf(server, "GET /window"), 0);
  EXPECT_EQ(engineIn(view)->property("title"), QStringLiteral("page"));
  EXPECT_THAT(asked, ElementsAre(server.url("/start")));

  EXPECT_TRUE(shows(view, url)) << "the program itself may";
  EXPECT_EQ(engineIn(view)->property("title"), QStringLiteral("secret"));
  const QString home = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  const auto cookies = std::filesystem::path(home.toStdString()) / "velmora/web";
  EXPECT_EQ(std::filesystem::status(cookies).permissions(), std::filesystem::perms::owner_all);
}

TEST_F(WebViewTest, ReloadsWhatWasLetGoUnlessItIsShownAgainAtOnce) {
  const HttpServer server([](const HttpRequest &) { return page("again"); });
  WebView view;
  ASSERT_TRUE(shows(view, server.url("/page")));
  view.hide();
  view.unload();
  view.show();
  QCoreApplication::processEvents();
  EXPECT_NE(engineIn(view), nullptr);
  view.hide();
  view.unload();
  ASSERT_TRUE(runUntil([&] { return engineIn(view) == nullptr; }));
  view.show();
  EXPECT_TRUE(runUntil([&] { return countOf(server, "GET /page") == 2; }));
}

TEST_F(WebViewTest, AcceptsTheCertificatesOfTheTrustedRootsOnly) {
  std::filesystem::create_directory(folder.path() / "other");
  const Certificates other = makeCertificates(folder.path() / "other");
  const Certificates own = makeCertificates(folder.path());
  HttpServer secure([](const HttpRequest &) { return page("safe"); }, &own);
  for (const auto &[roots, accepted] :
       {std::pair{std::filesystem::path(), false}, {other.roots, false}, {own.roots, true}}) {
    WebView view;
    view.setTrustedRoots(roots);
    EXPECT_EQ(shows(view, secure.url("/")), accepted) << roots;
  }
}

}  // namespace
}  // namespace velmora
