// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QUrl>
#include <QWidget>
#include <filesystem>
#include <memory>

#include "foundation/MainQueue.h"
#include "platform/web/WebEngine.h"

class QLabel;
class QPushButton;
class QStackedLayout;

namespace velmora {

class WebView;

/// Takes the decision about one navigation.
class WebPolicyListener {
 public:
  virtual void use() = 0;
  virtual void ignore() = 0;

 protected:
  ~WebPolicyListener() = default;
};

/// Who decides where a web view goes. Main thread.
class WebPolicyDelegate {
 public:
  /// Asked about each navigation of the main frame, however it comes about, once and before the request is
  /// sent; a redirect is a navigation of its own. Without a decision it is ignored. A page that is loaded
  /// meanwhile takes the place of the one asked about. The view must not be destroyed meanwhile.
  virtual void decidePolicyForNavigationAction(WebView &webView, WebNavigationType type, const QUrl &request,
                                               WebPolicyListener &listener) = 0;

 protected:
  ~WebPolicyDelegate() = default;
};

/// Who hears how the loads of a web view end. Main thread.
class WebFrameLoadDelegate {
 public:
  /// The page of `url` cannot be had; the view is empty now, and the delegate may call its `showFailure()`.
  virtual void didFailLoad(WebView &webView, const QUrl &url) = 0;

 protected:
  ~WebFrameLoadDelegate() = default;
};

/// Shows web pages, and pages of local files and resources that the program itself loads. Pages cannot reach
/// local files, download, open windows or use the desktop's devices; cookies are kept between runs in the
/// user's data folder. A page that fails to load leaves the view empty, unless the frame-load delegate shows
/// more.
///
/// The engine is loaded when a page is first shown; until then this is a plain widget. Where it is not
/// installed the view shows one line that says so. Main thread only.
class WebView : public QWidget, private WebEngineClient {
  Q_OBJECT

 public:
  /// With an engine of its own, or the one that belongs to the running program.
  explicit WebView(QWidget *parent = nullptr, const QString &engineFile = {});
  ~WebView() override;

  /// Null: every navigation is allowed. The delegate outlives the view or takes itself away.
  void setPolicyDelegate(WebPolicyDelegate *delegate) { m_delegate = delegate; }

  /// Null: failures show nothing. The delegate outlives the view or takes itself away.
  void setFrameLoadDelegate(WebFrameLoadDelegate *delegate) { m_frameLoadDelegate = delegate; }

  /// A PEM file of authorities that are trusted besides the system's. To be called before the first page.
  void setTrustedRoots(const std::filesystem::path &file);

  /// Loads a page, once the view is shown.
  void load(const QUrl &url);

  /// Tells the user in place of the page that it cannot be loaded, with a button that loads anew the page
  /// which the program asked for last.
  void showFailure();

  /// Frees what the page takes, soon, unless the view is shown again by then. The page that was last asked
  /// for is loaded anew when it is.
  void unload();

 Q_SIGNALS:
  void loadFinished(bool loaded);
  void engineMissing(const QString &reason);

 protected:
  void showEvent(QShowEvent *event) override;

 private:
  bool mayNavigate(WebNavigationType type, const QUrl &url) override;
  void pageFinished(bool loaded) override;
  void pageFailed(const QUrl &url) override;
  void loadWanted();
  [[nodiscard]] bool holdsFocus() const;
  void showPage();
  void showNotice(const QString &text, bool mayTryAgain);
  bool makeEngine();

  QString m_engineFile;
  QString m_trustedRoots;
  WebPolicyDelegate *m_delegate = nullptr;
  WebFrameLoadDelegate *m_frameLoadDelegate = nullptr;
  QUrl m_page;              // what the program asked for last
  bool m_wanted = false;    // and whether it is still to be loaded
  bool m_deciding = false;  // inside the delegate
  QStackedLayout *m_layout;
  QWidget *m_notice;  // in place of a page
  QLabel *m_noticeText;
  QPushButton *m_tryAgain;
  std::unique_ptr<WebEngine> m_engine;
  Alive m_alive;
};

}  // namespace velmora
