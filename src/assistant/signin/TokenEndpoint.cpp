// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/TokenEndpoint.h"

#include <QByteArray>
#include <nlohmann/json.hpp>
#include <utility>

namespace velmora {
namespace {

using Json = nlohmann::json;

constexpr auto kJson = "application/json";

HttpResponse refusal(int status, const char *error, const char *description) {
  const Json body{{"error", error}, {"error_description", description}};
  return {.status = status, .contentType = kJson, .body = body.dump()};
}

HttpResponse invalidRequest(const char *description) { return refusal(400, "invalid_request", description); }

HttpResponse tokens(const TokenAnswer &answer) {
  Json body{{"access_token", answer.accessToken},
            {"token_type", "Bearer"},
            {"expires_in", GrantStore::kAccessLife.count()},
            {"scope", answer.scope}};
  if (answer.refreshToken) body["refresh_token"] = *answer.refreshToken;
  return {.status = 200, .contentType = kJson, .body = body.dump()};
}

struct Credentials {
  std::string id;
  std::string secret;
};

/// Those of a field "Basic …", whose two parts are encoded like a form's values.
std::optional<Credentials> basicCredentials(const std::string &field) {
  const auto bytes = QByteArray::fromStdString(field);
  if (qstrnicmp(bytes.constData(), "basic ", 6) != 0) return std::nullopt;
  const auto decoded =
      QByteArray::fromBase64Encoding(bytes.mid(6).trimmed(), QByteArray::AbortOnBase64DecodingErrors);
  if (!decoded) return std::nullopt;
  const std::string pair = (*decoded).toStdString();
  const std::size_t colon = pair.find(':');
  if (colon == std::string::npos) return std::nullopt;
  auto id = formDecoded(pair.substr(0, colon));
  auto secret = formDecoded(pair.substr(colon + 1));
  if (!id || !secret) return std::nullopt;
  return Credentials{.id = *std::move(id), .secret = *std::move(secret)};
}

}  // namespace

template <typename Serve>
HttpResponse TokenEndpoint::authenticated(const HttpRequest &request, Serve serve) {
  const auto fields = parseForm(request.body);
  if (!fields) return invalidRequest("The form is malformed or holds a parameter twice");
  std::optional<Credentials> credentials;
  if (request.authorization) {
    if (fields->contains("client_secret")) return invalidRequest("The client authenticates in two ways");
    credentials = basicCredentials(*request.authorization);
  } else {
    credentials =
        Credentials{.id = valueOf(*fields, "client_id"), .secret = valueOf(*fields, "client_secret")};
  }
  const SignInClient *client =
      credentials ? m_clients.authenticate(credentials->id, credentials->secret) : nullptr;
  if (!client) {
    HttpResponse response = refusal(401, "invalid_client", "The client is not known, or its secret is wrong");
    if (request.authorization) response.fields.emplace_back("WWW-Authenticate", "Basic realm=\"Velmora\"");
    return response;
  }
  if (request.authorization && fields->contains("client_id") && valueOf(*fields, "client_id") != client->id) {
    return invalidRequest("The client names itself in two ways");
  }
  return serve(*fields, *client);
}

HttpResponse TokenEndpoint::token(const HttpRequest &request) {
  return authenticated(request, [this](const FormFields &fields, const SignInClient &client) {
    const std::string type = valueOf(fields, "grant_type");
    if (type.empty()) return invalidRequest("grant_type is missing");
    if (type == "authorization_code") return exchange(fields, client);
    if (type == "refresh_token") return refresh(fields, client);
    return refusal(400, "unsupported_grant_type", "Only authorization_code and refresh_token are known");
  });
}

HttpResponse TokenEndpoint::exchange(const FormFields &fields, const SignInClient &client) {
  const std::string code = valueOf(fields, "code");
  const std::string uri = valueOf(fields, "redirect_uri");
  if (code.empty() || uri.empty()) return invalidRequest("code and redirect_uri are needed");
  const auto answer = m_grants.exchange(code, client.id, uri);
  return answer ? tokens(*answer) : refusal(400, "invalid_grant", "The code is not or no longer good");
}

HttpResponse TokenEndpoint::refresh(const FormFields &fields, const SignInClient &client) {
  const std::string token = valueOf(fields, "refresh_token");
  if (token.empty()) return invalidRequest("refresh_token is needed");
  const auto answer = m_grants.refresh(token, client.id);
  if (!answer) return refusal(400, "invalid_grant", "The refresh token is not or no longer good");
  const std::string scope = valueOf(fields, "scope");
  if (!scope.empty() && scope != answer->scope) return refusal(400, "invalid_scope", "This was not granted");
  return tokens(*answer);
}

HttpResponse TokenEndpoint::revoke(const HttpRequest &request) {
  return authenticated(request, [this](const FormFields &fields, const SignInClient &client) {
    const std::string token = valueOf(fields, "token");
    if (token.empty()) return invalidRequest("token is needed");
    if (!m_grants.revoke(token, client.id))
      return refusal(400, "invalid_grant", "The token is another client's");
    return HttpResponse{};
  });
}

}  // namespace velmora
