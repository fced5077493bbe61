// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Between the widget that shows web pages and the engine that draws them. The engine takes 80 MB and 50 ms
// for being linked alone, so it lives in a plugin that is loaded when the first page is shown.
#pragma once

#include <QString>
#include <QUrl>
#include <QWidget>
#include <QtPlugin>
#include <memory>

namespace velmora {

/// What makes a page go elsewhere.
enum class WebNavigationType {
  linkClicked,  ///< the user, or a script in their place
  other,        ///< the program, a form, a redirect, the history
};

/// Who shows a page. Called on the main thread.
class WebEngineClient {
 public:
  /// Asked before the main frame goes to `url`; false keeps it where it is. The engine must not be destroyed
  /// meanwhile.
  virtual bool mayNavigate(WebNavigationType type, const QUrl &url) = 0;
  virtual void pageFinished(bool loaded) = 0;
  /// There is nothing of `url` to be shown: its server cannot be reached, or is not trusted.
  virtual void pageFailed(const QUrl &url) = 0;

 protected:
  ~WebEngineClient() = default;
};

/// One page.
class WebEngine {
 public:
  virtual ~WebEngine() = default;
  /// What shows the page; belongs to the engine.
  virtual QWidget &widget() = 0;
  virtual void load(const QUrl &url) = 0;
};

struct WebEngineSettings {
  QString storageFolder;  ///< cookies and what else pages keep; made with mode 0700
  QString trustedRoots;   ///< PEM; the certificates of its authorities are accepted as well; may be empty
};

/// The root of the plugin. All pages of a program share their cookies.
class WebEngineFactory {
 public:
  virtual ~WebEngineFactory() = default;
  /// `client` outlives the page.
  virtual std::unique_ptr<WebEngine> make(const WebEngineSettings &settings, WebEngineClient &client) = 0;
};

}  // namespace velmora

Q_DECLARE_INTERFACE(velmora::WebEngineFactory, "velmora.WebEngineFactory/2")
