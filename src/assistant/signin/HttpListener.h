// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// HTTP on this machine only: what may not come in is refused before a handler sees it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "assistant/signin/ShortLived.h"

namespace velmora {

struct HttpRequest {
  std::string method;                        ///< GET (also for HEAD) or POST
  std::string path;                          ///< as it stands in the request, without the query
  std::string query;                         ///< what follows the first '?', still escaped
  std::string body;                          ///< of a POST: a form
  std::optional<std::string> authorization;  ///< the field of this name
  std::string language;                      ///< the Accept-Language field, best first; may be empty
};

struct HttpResponse {
  int status = 200;
  std::string contentType = {};
  std::string body = {};
  std::vector<std::pair<std::string, std::string>> fields = {};
};

/// Listens on 127.0.0.1. A connection carries one request. Refused with a status of its own: a Host field
/// that is not this address (403; 400 when there is not exactly one), a POST that comes from a page of
/// another origin (403), a body over 8 KiB (413), one without a length (411), or that is not a plain form
/// (415), and more requests than the rate allows (429). A client gets ten seconds for its whole request.
class HttpListener {
 public:
  /// Called on several threads at once. An exception becomes status 500.
  using Handler = std::function<HttpResponse(const HttpRequest &request)>;

  struct Settings {
    int port = 0;                 ///< 0 takes a free one
    double requestsASecond = 20;  ///< in the long run
    double burst = 60;            ///< how many may come at once
    std::chrono::milliseconds requestLimit{10'000};
    SignInClock clock = [] { return std::chrono::system_clock::now(); };
  };

  /// Takes the port, and refuses connections until it is started. Throws `std::runtime_error`.
  explicit HttpListener(const Settings &settings);
  /// Gives up what is under way.
  ~HttpListener();
  HttpListener(const HttpListener &) = delete;
  HttpListener &operator=(const HttpListener &) = delete;

  [[nodiscard]] int port() const;
  /// Once.
  void start(Handler handler);

 private:
  class Implementation;
  std::unique_ptr<Implementation> m_implementation;
};

}  // namespace velmora
