// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/http/NetworkSession.h"

#include <openssl/crypto.h>

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTimer>
#include <algorithm>
#include <utility>

namespace velmora {
namespace {

/// Who carries the turns needs OpenSSL to the very end of the process. Only its first initialisation counts,
/// which may be the one for a form.
[[maybe_unused]] const int keepOpenSsl = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);

QSslConfiguration tlsConfiguration(const std::filesystem::path &roots) {
  QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
  configuration.setCaCertificates(QSslConfiguration::systemCaCertificates() +
                                  QSslCertificate::fromPath(QString::fromStdString(roots.string())));
  configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
  return configuration;
}

/// The answer of a server that says no is an answer; Qt counts it among the errors.
bool isAnswered(const QNetworkReply &reply) {
  const int error = reply.error();
  return error == QNetworkReply::NoError || error == QNetworkReply::ProtocolInvalidOperationError ||
         (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
         (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

/// The body of one request. Qt sends a form again over a new connection when the first one breaks after it,
/// but a code must not be used twice: only a redirect may take the form back to its start.
class Form : public QIODevice {
 public:
  explicit Form(QByteArray text) : m_text(std::move(text)) {
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
  }
  void allowReset() { m_mayReset = true; }
  bool reset() override { return std::exchange(m_mayReset, false) && QIODevice::reset(); }
  [[nodiscard]] qint64 size() const override { return m_text.size(); }

 protected:
  qint64 readData(char *data, qint64 size) override {
    const qint64 count = std::min(size, m_text.size() - pos());
    std::copy_n(m_text.constData() + pos(), count, data);
    return count;
  }
  qint64 writeData(const char *, qint64) override { return -1; }

 private:
  QByteArray m_text;
  bool m_mayReset = false;
};

class NetworkSession final : public HttpSession {
 public:
  explicit NetworkSession(HttpLimits limits) : m_limits(std::move(limits)) {}

  void post(const QUrl &url, const QByteArray &form, Completion completion) override {
    QNetworkReply *const reply = send(url, form);
    const auto refusal = std::make_shared<std::string>();
    const auto refuse = [reply, refusal](const char *why) {
      *refusal = why;
      reply->abort();
    };
    const auto refuseLarge = [reply, refuse, largest = m_limits.largestAnswer] {
      const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
      if (std::max(announced, reply->bytesAvailable()) > largest) refuse("the answer is too large");
    };
    QObject::connect(reply, &QNetworkReply::metaDataChanged, &m_manager, refuseLarge);
    QObject::connect(reply, &QNetworkReply::readyRead, &m_manager, refuseLarge);
    auto *deadline = new QTimer(reply);
    QObject::connect(deadline, &QTimer::timeout, reply, [refuse] { refuse("no answer in time"); });
    deadline->setSingleShot(true);
    deadline->start(m_limits.timeout);
    QObject::connect(reply, &QNetworkReply::finished, &m_manager,
                     [reply, refusal, completion = std::move(completion)] {
                       completion(resultOf(*reply, *refusal));
                       reply->deleteLater();
                     });
  }

 private:
  QNetworkReply *send(const QUrl &url, const QByteArray &form) {
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QByteArrayLiteral("application/x-www-form-urlencoded; charset=utf-8"));
    // A packed answer could be a thousand times as large as what arrives.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    if (url.scheme() == QLatin1String("https")) request.setSslConfiguration(tlsConfiguration(m_limits.roots));
    auto *body = new Form(form);
    QNetworkReply *reply = m_manager.post(request, body);
    body->setParent(reply);
    QObject::connect(reply, &QNetworkReply::redirected, body, &Form::allowReset);
    return reply;
  }

  static HttpReply resultOf(QNetworkReply &reply, const std::string &refusal) {
    if (!refusal.empty()) return {.error = refusal};
    if (!isAnswered(reply)) return {.error = reply.errorString().toStdString()};
    return {.status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
            .body = reply.readAll()};
  }

  const HttpLimits m_limits;
  QNetworkAccessManager m_manager;
};

class LinkedHttpEngine final : public HttpEngine {
 public:
  [[nodiscard]] std::unique_ptr<HttpSession> makeSession(const HttpLimits &limits) override {
    return makeNetworkSession(limits);
  }
};

}  // namespace

std::unique_ptr<HttpSession> makeNetworkSession(const HttpLimits &limits) {
  return std::make_unique<NetworkSession>(limits);
}

HttpEngine *httpEngine(std::string & /*problem*/) {
  static LinkedHttpEngine engine;
  return &engine;
}

}  // namespace velmora
