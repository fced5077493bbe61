// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/LoopbackHttp.h"

#include <httplib.h>

#include <QString>
#include <QUrl>

#include "foundation/Endpoint.h"
#include "tools/ServiceAccess.h"

namespace velmora {
namespace {

constexpr std::size_t kLongestAnswer = 1024 * 1024;
constexpr std::chrono::seconds kPatience{30};
constexpr auto kForm = "application/x-www-form-urlencoded";

LoopbackAnswer send(const LoopbackAddress &address, httplib::Request request) {
  httplib::Client client(address.origin);
  client.set_connection_timeout(kPatience);
  client.set_read_timeout(kPatience);
  client.set_write_timeout(kPatience);
  LoopbackAnswer answer;
  request.content_receiver = [&](const char *bytes, std::size_t size, std::uint64_t, std::uint64_t) {
    if (size > kLongestAnswer - answer.body.size()) return false;
    answer.body.append(bytes, size);
    return true;
  };
  const auto result = client.send(request);
  if (!result) {
    const std::string who = "the sign-in at " + address.origin;
    switch (result.error()) {
      case httplib::Error::Canceled: throw ServiceError(who + " answers too much");
      case httplib::Error::Connection:
        throw ServiceError(who + " does not answer (is its assistant running? start it, or give --local)");
      default: throw ServiceError(who + " does not answer: " + httplib::to_string(result.error()));
    }
  }
  answer.status = result->status;
  answer.location = result->get_header_value("Location");
  return answer;
}

}  // namespace

LoopbackAddress LoopbackAddress::parse(const std::string &address) {
  const QUrl url(QString::fromStdString(address), QUrl::StrictMode);
  const Endpoint endpoint{.host = url.host().toStdString(), .port = std::nullopt};
  if (!url.isValid() || url.scheme() != QLatin1String("http") || !endpoint.isLoopback()) {
    throw ServiceError(
        "this needs a sign-in on this machine, and the deployment has its own at " +
        (url.host().isEmpty() ? std::string("an address that cannot be read") : endpoint.host));
  }
  return {.origin =
              url.toString(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment | QUrl::RemoveUserInfo)
                  .toStdString(),
          .path = url.path(QUrl::FullyEncoded).toStdString()};
}

std::string formEncoded(const FormValues &values) {
  std::string text;
  for (const auto &[name, value] : values) {
    if (!text.empty()) text += '&';
    text += QUrl::toPercentEncoding(QString::fromStdString(name)).toStdString() + '=' +
            QUrl::toPercentEncoding(QString::fromStdString(value)).toStdString();
  }
  return text;
}

LoopbackAnswer getPage(const LoopbackAddress &address, const FormValues &query) {
  httplib::Request request;
  request.method = "GET";
  request.path = address.path + '?' + formEncoded(query);
  return send(address, std::move(request));
}

LoopbackAnswer postForm(const LoopbackAddress &address, const FormValues &form) {
  httplib::Request request;
  request.method = "POST";
  request.path = address.path;
  request.headers = {{"Content-Type", kForm}, {"Origin", address.origin}};
  request.body = formEncoded(form);
  return send(address, std::move(request));
}

}  // namespace velmora
