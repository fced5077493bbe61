// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Between who sends forms and the library that carries them. That brings ten others along, for a request an
// hour: the program in the status bar loads them with the first one, the others are linked with them.
#pragma once

#include <QByteArray>
#include <QUrl>
#include <QtPlugin>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace velmora {

/// What became of a request.
struct HttpReply {
  std::string error = {};  ///< why there is no answer; empty: there is one
  int status = 0;
  QByteArray body = {};
};

struct HttpLimits {
  std::filesystem::path roots;  ///< PEM, trusted besides the system's; may be missing
  std::chrono::milliseconds timeout;
  qint64 largestAnswer;  ///< bytes
};

/// Sends forms. Main thread. As it goes it ends what is under way, whose completions are never called.
class HttpSession {
 public:
  using Completion = std::function<void(HttpReply reply)>;

  virtual ~HttpSession() = default;
  /// `url` is one of HTTP or HTTPS. `completion` is called once, from inside the library, where the session
  /// must not be destroyed.
  virtual void post(const QUrl &url, const QByteArray &form, Completion completion) = 0;
};

/// Main thread.
class HttpEngine {
 public:
  virtual ~HttpEngine() = default;
  [[nodiscard]] virtual std::unique_ptr<HttpSession> makeSession(const HttpLimits &limits) = 0;
};

/// The engine of this process: the one that is linked, unless the program brings another definition of this.
/// Null, with the reason, when it cannot be had.
HttpEngine *httpEngine(std::string &problem);

}  // namespace velmora

Q_DECLARE_INTERFACE(velmora::HttpEngine, "velmora.HttpEngine/1")
