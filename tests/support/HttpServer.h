// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "protocol/Certificates.h"
#include "support/Waiting.h"

namespace velmora::tests {

struct HttpRequest {
  std::string method;
  std::string target;  ///< path and query, as they came
  std::map<std::string, std::string> headers;
  std::string body;
};

struct HttpAnswer {
  int status = 200;
  std::string body = {};
  std::string type = "application/json";
  std::map<std::string, std::string> headers = {};
};

/// An HTTP server on a port of 127.0.0.1 that answers what a test tells it, on threads of its own.
class HttpServer {
 public:
  using Script = std::function<HttpAnswer(const HttpRequest &)>;

  explicit HttpServer(Script script, const Certificates *certificates = nullptr);
  ~HttpServer();

  [[nodiscard]] std::string url(const std::string &path, const std::string &host = "127.0.0.1") const;
  /// What has arrived, before it is answered.
  [[nodiscard]] const Inbox<HttpRequest> &requests() const;

 private:
  struct Implementation;
  std::unique_ptr<Implementation> m_implementation;
};

}  // namespace velmora::tests
