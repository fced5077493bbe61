// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/HttpClient.h"

#include <QUrl>
#include <utility>

#include "auth/HttpEngine.h"

namespace velmora {
namespace {

/// Everything but letters, digits and -._~ is escaped, blanks as %20: what a server reads is what was meant.
QByteArray formOf(const HttpClient::Parameters &parameters) {
  QByteArray form;
  for (auto it = parameters.begin(); it != parameters.end(); ++it) {
    if (!form.isEmpty()) form += '&';
    form += QUrl::toPercentEncoding(it.key()) + '=' + QUrl::toPercentEncoding(it.value());
  }
  return form;
}

HttpClient::Answer answerOf(const HttpReply &reply) {
  if (!reply.error.empty()) return HttpError{reply.error};
  if (auto json = JsonValue::parse({reply.body.constData(), static_cast<std::size_t>(reply.body.size())})) {
    return *std::move(json);
  }
  return HttpError{"the answer is no JSON (HTTP status " + std::to_string(reply.status) + ")"};
}

}  // namespace

HttpClient::HttpClient(std::filesystem::path roots, std::chrono::milliseconds timeout)
    : m_roots(std::move(roots)), m_timeout(timeout) {}

HttpClient::~HttpClient() = default;

void HttpClient::postForm(const QString &url, const Parameters &parameters, Completion completion) {
  const QUrl address(url, QUrl::StrictMode);
  const QString scheme = address.isValid() ? address.scheme() : QString();
  if (scheme != QLatin1String("https") && scheme != QLatin1String("http"))
    return deliver(std::move(completion), HttpError{"the address is none of HTTP"});
  if (!m_session) {
    std::string problem;
    HttpEngine *const engine = httpEngine(problem);
    if (engine == nullptr)
      return deliver(std::move(completion), HttpError{"requests cannot be sent: " + problem});
    m_session =
        engine->makeSession({.roots = m_roots, .timeout = m_timeout, .largestAnswer = kLargestAnswer});
  }
  m_session->post(address, formOf(parameters),
                  [this, completion = std::move(completion)](const HttpReply &reply) {
                    deliver(completion, answerOf(reply));
                  });
}

void HttpClient::deliver(Completion completion, Answer answer) {
  // From the queue and not from inside the library, where the client could not be destroyed.
  MainQueue::main().async(
      m_alive, [completion = std::move(completion), answer = std::move(answer)] { completion(answer); });
}

}  // namespace velmora
