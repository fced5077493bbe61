// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMap>
#include <QString>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <variant>

#include "auth/JsonValue.h"
#include "foundation/MainQueue.h"

namespace velmora {

class HttpSession;

/// Why there is no answer, in one line that holds nothing of the request or the answer.
struct HttpError {
  std::string text;
};

/// Sends forms and reads JSON. Main thread only.
///
/// Servers are verified against the system's roots and those of `roots` (PEM; it may be missing). Redirects
/// lead nowhere but to the same scheme, host and port. No cookie is kept, and no request is sent twice.
class HttpClient {
 public:
  /// In ascending order of the names, as they are sent.
  using Parameters = QMap<QString, QString>;
  using Answer = std::variant<JsonValue, HttpError>;
  using Completion = std::function<void(const Answer &)>;

  static constexpr std::chrono::milliseconds kTimeout = std::chrono::seconds(30);
  static constexpr qint64 kLargestAnswer = 1 << 20;  ///< bytes; a larger one is an error

  /// `timeout` is for the whole of a request, from the look-up of the name to the last byte.
  explicit HttpClient(std::filesystem::path roots, std::chrono::milliseconds timeout = kTimeout);
  /// Ends what is under way; its completions are never called.
  ~HttpClient();
  HttpClient(const HttpClient &) = delete;
  HttpClient &operator=(const HttpClient &) = delete;

  /// POSTs `parameters` as an HTML form. `completion` is called once from the event loop, with the JSON of
  /// the answer whatever its HTTP status is; it may destroy the client.
  void postForm(const QString &url, const Parameters &parameters, Completion completion);

 private:
  void deliver(Completion completion, Answer answer);

  std::filesystem::path m_roots;
  std::chrono::milliseconds m_timeout;
  std::unique_ptr<HttpSession> m_session;  // made by the first request
  Alive m_alive;
};

}  // namespace velmora
