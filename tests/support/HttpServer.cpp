// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/HttpServer.h"

#include <httplib.h>

#include <thread>

namespace velmora::tests {

struct HttpServer::Implementation {
  Implementation(Script theScript, const Certificates *certificates)
      : script(std::move(theScript)), secure(certificates != nullptr) {
    if (certificates) {
      server = std::make_unique<httplib::SSLServer>(certificates->chain.c_str(), certificates->key.c_str());
    } else {
      server = std::make_unique<httplib::Server>();
    }
    server->set_keep_alive_timeout(1);  // seconds; the stop waits for it
    const auto handler = [this](const httplib::Request &request, httplib::Response &response) {
      answer(request, response);
    };
    server->Get(".*", handler);
    server->Post(".*", handler);
    port = server->bind_to_any_port("127.0.0.1");
    thread = std::thread([this] { server->listen_after_bind(); });
    // A stop before the start would be forgotten.
    while (!server->is_running()) std::this_thread::yield();
  }
  ~Implementation() {
    server->stop();
    thread.join();
  }

  void answer(const httplib::Request &request, httplib::Response &response) {
    HttpRequest seen{request.method, request.target, {}, request.body};
    for (const auto &[name, value] : request.headers) seen.headers.emplace(name, value);
    requests.put(seen);
    const HttpAnswer told = script(seen);
    response.status = told.status;
    for (const auto &[name, value] : told.headers) response.set_header(name, value);
    response.set_content(told.body, told.type);
  }

  const Script script;
  const bool secure;
  const Inbox<HttpRequest> requests;
  std::unique_ptr<httplib::Server> server;
  int port = 0;
  std::thread thread;
};

HttpServer::HttpServer(Script script, const Certificates *certificates)
    : m_implementation(std::make_unique<Implementation>(std::move(script), certificates)) {}
HttpServer::~HttpServer() = default;

std::string HttpServer::url(const std::string &path, const std::string &host) const {
  return (m_implementation->secure ? "https://" : "http://") + host + ':' +
         std::to_string(m_implementation->port) + path;
}

const Inbox<HttpRequest> &HttpServer::requests() const { return m_implementation->requests; }

}  // namespace velmora::tests
