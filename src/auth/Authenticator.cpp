// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/Authenticator.h"

#include <algorithm>
#include <utility>

#include "auth/TokenStore.h"
#include "foundation/Log.h"
#include "foundation/fatal.h"

namespace velmora {
namespace {

/// The member "installed" of the client description.
JsonValue readClient(const Deployment &deployment) {
  std::string contents;
  try {
    contents = readFile(deployment.resource("google_oauth2", "json"));
  } catch (const std::exception &error) {
    fatal(std::string("The client description cannot be read: ") + error.what());
  }
  return JsonValue::parse(contents).value_or(JsonValue())["installed"];
}

/// The instant so many seconds from now; one beyond the years that the settings can write is their last.
QDateTime inSeconds(std::int64_t seconds) {
  constexpr std::int64_t kFarthest = 7000LL * 365 * 24 * 3600;
  constexpr std::int64_t kMostPast = 1000LL * 365 * 24 * 3600;
  const auto within = static_cast<double>(std::clamp(seconds, -kMostPast, kFarthest));
  return QDateTime::currentDateTimeUtc().addMSecs(static_cast<qint64>(within * 1000));
}

void storeExpiry(UserDefaults &defaults, std::int64_t seconds) {
  defaults.setObject(inSeconds(seconds), kExpiresInKey);
}

void storeText(UserDefaults &defaults, const std::optional<QString> &text, QLatin1String key) {
  if (text) defaults.setObject(*text, key);
}

/// Which keys hold something, and never what.
void trace(const UserDefaults &defaults) {
  const auto held = [&](QLatin1String key) {
    return defaults.objectForKey(key).isValid() ? " is held" : " is not held";
  };
  constexpr QLatin1String kAccessToken("access_token");
  log("Token store: expires_in", held(kExpiresInKey), ", access_token", held(kAccessToken), ", refresh_token",
      held(kRefreshTokenKey));
}

/// An observer of the store may destroy the authenticator, which is not needed here.
void storeTokens(UserDefaults &defaults, const JsonValue &answer) {
  if (const auto seconds = answer["expires_in"].integer()) storeExpiry(defaults, *seconds);
  storeText(defaults, answer["access_token"].string(), kAuthTokenKey);
  storeText(defaults, answer["refresh_token"].string(), kRefreshTokenKey);
  // Also when the service refused the code.
  defaults.setObject(true, kLoggedInKey);
  defaults.synchronize();
  trace(defaults);
}

std::string described(const std::optional<QDateTime> &date) {
  return date ? date->toUTC().toString(Qt::ISODateWithMs).toStdString() : "none";
}

}  // namespace

Authenticator::Authenticator(const Deployment &deployment, UserDefaults &defaults)
    : m_scope(QString::fromStdString(deployment.scope)),
      m_defaults(defaults),
      m_http(deployment.resource("roots", "pem")) {
  const JsonValue client = readClient(deployment);
  m_authUrl = client["auth_uri"].string().value_or(QString());
  m_tokenUrl = client["token_uri"].string().value_or(QString());
  // The first one is for programs that cannot be redirected to.
  m_redirectUrl = client["redirect_uris"][1].string().value_or(QString());
  m_clientId = client["client_id"].string().value_or(QString());
  m_clientSecret = client["client_secret"].string().value_or(QString());
  m_loginUrl = m_authUrl + QLatin1String("?client_id=") + m_clientId + QLatin1String("&scope=") + m_scope +
               QLatin1String("&response_type=code&redirect_uri=") + m_redirectUrl;
}

void Authenticator::requestToken(const QString &code) {
  const HttpClient::Parameters parameters{
      {QStringLiteral("code"), code},
      {QStringLiteral("client_id"), m_clientId},
      {QStringLiteral("client_secret"), m_clientSecret},
      {QStringLiteral("redirect_uri"), m_redirectUrl},
      {QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
  };
  m_http.postForm(m_tokenUrl, parameters, [&defaults = m_defaults](const HttpClient::Answer &answer) {
    if (const auto *error = std::get_if<HttpError>(&answer)) return log("Token request error: ", error->text);
    storeTokens(defaults, std::get<JsonValue>(answer));
  });
}

void Authenticator::checkLoginStatus(Completion completion) {
  std::optional<QDateTime> expiry = m_defaults.dateForKey(kExpiresInKey);
  if (!expiry->isValid()) expiry.reset();
  log("Exp Date : ", described(expiry));
  log("Curr Date : ", described(QDateTime::currentDateTimeUtc()));
  if (!m_defaults.boolForKey(kLoggedInKey)) return completion(false);
  // A token of unknown expiry counts as expired.
  if (!expiry || *expiry < QDateTime::currentDateTimeUtc()) return refreshToken(std::move(completion));
  completion(true);
}

void Authenticator::refreshToken(Completion completion) {
  const QVariant stored = m_defaults.objectForKey(kRefreshTokenKey);
  const bool present = stored.typeId() == QMetaType::QString;
  const HttpClient::Parameters parameters{
      // Without a token the key's own name is sent, for the service to refuse.
      {QStringLiteral("refresh_token"), present ? stored.toString() : QString(kRefreshTokenKey)},
      {QStringLiteral("client_id"), m_clientId},
      {QStringLiteral("client_secret"), m_clientSecret},
      {QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
  };
  m_http.postForm(m_tokenUrl, parameters,
                  [&defaults = m_defaults, completion = std::move(completion)](const auto &answer) {
                    if (const auto *error = std::get_if<HttpError>(&answer)) {
                      log("Token refresh error: ", error->text);
                      return completion(false);
                    }
                    const auto &json = std::get<JsonValue>(answer);
                    if (json.isNull()) {
                      const auto seconds = json["expires_in"].integer();
                      if (!seconds) fatal("A token was refreshed without the time for which it holds");
                      storeExpiry(defaults, *seconds);
                      storeText(defaults, json["access_token"].string(), kAuthTokenKey);
                    }
                    completion(true);
                  });
}

void Authenticator::logout() { m_defaults.setObject(false, kLoggedInKey); }

}  // namespace velmora
