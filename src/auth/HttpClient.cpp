// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/HttpClient.h"

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <utility>

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

HttpClient::Answer answerOf(QNetworkReply &reply, const std::string &refusal) {
  if (!refusal.empty()) return HttpError{refusal};
  if (!isAnswered(reply)) return HttpError{reply.errorString().toStdString()};
  const QByteArray body = reply.readAll();
  if (auto json = JsonValue::parse({body.constData(), static_cast<std::size_t>(body.size())})) {
    return *std::move(json);
  }
  const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
  return HttpError{"the answer is no JSON (HTTP status " + std::to_string(status) + ")"};
}

}  // namespace

HttpClient::HttpClient(std::filesystem::path roots, std::chrono::milliseconds timeout)
    : m_roots(std::move(roots)), m_timeout(timeout) {}

HttpClient::~HttpClient() = default;

void HttpClient::postForm(const QString &url, const Parameters &parameters, Completion completion) {
  QNetworkReply *reply = send(url, formOf(parameters));
  if (!reply) return deliver(std::move(completion), HttpError{"the address is none of HTTP"});

  const auto refusal = std::make_shared<std::string>();
  const auto refuse = [reply, refusal](const char *why) {
    *refusal = why;
    reply->abort();
  };
  const auto refuseLarge = [reply, refuse] {
    const qint64 announced = reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (std::max(announced, reply->bytesAvailable()) > kLargestAnswer) refuse("the answer is too large");
  };
  QNetworkAccessManager *here = m_manager.get();
  QObject::connect(reply, &QNetworkReply::metaDataChanged, here, refuseLarge);
  QObject::connect(reply, &QNetworkReply::readyRead, here, refuseLarge);
  auto *deadline = new QTimer(reply);
  QObject::connect(deadline, &QTimer::timeout, reply, [refuse] { refuse("no answer in time"); });
  deadline->setSingleShot(true);
  deadline->start(m_timeout);
  QObject::connect(reply, &QNetworkReply::finished, here,
                   [this, reply, refusal, completion = std::move(completion)]() mutable {
                     deliver(std::move(completion), answerOf(*reply, *refusal));
                     reply->deleteLater();
                   });
}

QNetworkReply *HttpClient::send(const QString &url, const QByteArray &form) {
  QNetworkRequest request{QUrl(url, QUrl::StrictMode)};
  const QString scheme = request.url().isValid() ? request.url().scheme() : QString();
  const bool secure = scheme == QLatin1String("https");
  if (!secure && scheme != QLatin1String("http")) return nullptr;

  if (!m_manager) m_manager = std::make_unique<QNetworkAccessManager>();
  request.setHeader(QNetworkRequest::ContentTypeHeader,
                    QByteArrayLiteral("application/x-www-form-urlencoded; charset=utf-8"));
  // A packed answer could be a thousand times as large as what arrives.
  request.setRawHeader("Accept-Encoding", "identity");
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
  request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  if (secure) request.setSslConfiguration(tlsConfiguration(m_roots));
  auto *body = new Form(form);
  QNetworkReply *reply = m_manager->post(request, body);
  body->setParent(reply);
  QObject::connect(reply, &QNetworkReply::redirected, body, &Form::allowReset);
  return reply;
}

void HttpClient::deliver(Completion completion, Answer answer) {
  // From the queue and not from inside Qt's signals, where the client could not be destroyed.
  MainQueue::main().async(
      m_alive, [completion = std::move(completion), answer = std::move(answer)] { completion(answer); });
}

}  // namespace velmora
