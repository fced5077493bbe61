// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/SignIn.h"

#include <QDateTime>
#include <QRegularExpression>
#include <nlohmann/json.hpp>

#include "tools/LoopbackHttp.h"
#include "tools/Report.h"
#include "tools/ServiceAccess.h"

namespace velmora {
namespace {

using Json = nlohmann::json;

const QString kLoggedIn = QStringLiteral("logged_in");
const QString kAuthToken = QStringLiteral("auth_token");
const QString kRefreshToken = QStringLiteral("refresh_token");
const QString kExpiry = QStringLiteral("expires_in");

std::string textMember(const Json &object, const char *name) {
  if (!object.is_object()) return {};
  const auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

/// What a client knows of the sign-in that its deployment brings; empty where the description says nothing.
struct ClientDescription {
  std::string id;
  std::string secret;
  std::string authorization;
  std::string token;
  std::string revocation;
  std::string redirect;

  static ClientDescription load(const std::filesystem::path &file) {
    std::string contents;
    try {
      contents = readFile(file);
    } catch (const std::runtime_error &error) {
      throw ServiceError(std::string("the deployment has no sign-in: ") + error.what());
    }
    const Json json = Json::parse(contents, nullptr, false);
    const Json installed = json.is_object() ? json.value("installed", Json()) : Json();
    ClientDescription description{.id = textMember(installed, "client_id"),
                                  .secret = textMember(installed, "client_secret"),
                                  .authorization = textMember(installed, "auth_uri"),
                                  .token = textMember(installed, "token_uri"),
                                  .revocation = textMember(installed, "revocation_uri"),
                                  .redirect = {}};
    const Json uris = installed.is_object() ? installed.value("redirect_uris", Json()) : Json();
    if (uris.is_array() && uris.size() > 1 && uris[1].is_string())
      description.redirect = uris[1].get<std::string>();
    return description;
  }
};

/// The hidden fields of a page's form.
FormValues hiddenFields(const std::string &page) {
  static const QRegularExpression input(
      QStringLiteral("<input type=\"hidden\" name=\"([^\"]*)\" value=\"([^\"]*)\">"));
  FormValues fields;
  for (auto matches = input.globalMatch(QString::fromStdString(page)); matches.hasNext();) {
    const auto match = matches.next();
    fields[match.captured(1).toStdString()] = match.captured(2).toStdString();
  }
  return fields;
}

/// The value of `name` where a redirect leads; empty when it has none.
std::string queryValue(const std::string &location, const std::string &name) {
  const QRegularExpression value(QLatin1String("[?&]") + QString::fromStdString(name) +
                                 QLatin1String("=([^&#]*)"));
  return value.match(QString::fromStdString(location)).captured(1).toStdString();
}

[[noreturn]] void failAt(const char *step, const LoopbackAnswer &answer) {
  const std::string error = textMember(Json::parse(answer.body, nullptr, false), "error");
  throw ServiceError("the sign-in failed at " + std::string(step) + " with status " +
                     std::to_string(answer.status) + (error.empty() ? "" : ": " + plainText(error)));
}

/// Asks for the consent page and presses its button.
std::string authorisationCode(const ClientDescription &client, const std::string &scope) {
  const auto address = LoopbackAddress::parse(client.authorization);
  const auto page = getPage(address, {{"client_id", client.id},
                                      {"scope", scope},
                                      {"response_type", "code"},
                                      {"redirect_uri", client.redirect}});
  if (page.status != 200) failAt("the consent page", page);
  FormValues form = hiddenFields(page.body);
  form["decision"] = "allow";
  const auto answer = postForm(address, form);
  std::string code = queryValue(answer.location, "code");
  if (!answer.location.starts_with(client.redirect) || code.empty()) failAt("the consent", answer);
  return code;
}

void store(const Json &answer) {
  UserDefaults &defaults = UserDefaults::standard();
  const auto set = [&](const QString &key, const char *member) {
    defaults.setObject(QString::fromStdString(textMember(answer, member)), key);
  };
  set(kAuthToken, "access_token");
  set(kRefreshToken, "refresh_token");
  const auto life = answer.value("expires_in", std::int64_t{0});
  defaults.setObject(QDateTime::currentDateTimeUtc().addSecs(life), kExpiry);
  defaults.setObject(true, kLoggedIn);
  if (!defaults.synchronize()) throw ServiceError("the tokens could not be stored: " + defaults.problem());
}

}  // namespace

std::string signIn(const Options &options, const Interruption &interruption) {
  const ServiceAccess service(options, interruption.wake().descriptor());
  const Deployment &deployment = service.deployment();
  const auto client = ClientDescription::load(deployment.resource("google_oauth2", "json"));
  const auto token = LoopbackAddress::parse(client.token);
  const auto answer = postForm(token, {{"client_id", client.id},
                                       {"client_secret", client.secret},
                                       {"code", authorisationCode(client, deployment.scope)},
                                       {"grant_type", "authorization_code"},
                                       {"redirect_uri", client.redirect}});
  const Json tokens = Json::parse(answer.body, nullptr, false);
  const bool complete = !textMember(tokens, "access_token").empty() &&
                        !textMember(tokens, "refresh_token").empty() && tokens.contains("expires_in") &&
                        tokens.at("expires_in").is_number_integer();
  if (answer.status != 200 || !complete) failAt("the exchange of the code", answer);
  store(tokens);
  return "Signed in.";
}

std::string signOut(const Options &options, const Interruption &interruption) {
  UserDefaults &defaults = UserDefaults::standard();
  const QString refresh = defaults.stringForKey(kRefreshToken);
  const std::string token = (refresh.isEmpty() ? defaults.stringForKey(kAuthToken) : refresh).toStdString();
  defaults.setObject(false, kLoggedIn);
  for (const QString &key : {kAuthToken, kRefreshToken, kExpiry}) defaults.removeObjectForKey(key);
  if (!defaults.synchronize()) throw ServiceError("the tokens could not be removed: " + defaults.problem());
  if (token.empty()) return "Nobody was signed in.";
  try {
    const ServiceAccess service(options, interruption.wake().descriptor());
    const auto client = ClientDescription::load(service.deployment().resource("google_oauth2", "json"));
    if (client.revocation.empty()) return "Signed out on this machine; the service cannot be told.";
    const auto answer =
        postForm(LoopbackAddress::parse(client.revocation),
                 {{"client_id", client.id}, {"client_secret", client.secret}, {"token", token}});
    if (answer.status != 200) failAt("the revocation", answer);
  } catch (const std::runtime_error &error) {
    throw ServiceError(std::string("signed out on this machine, but the tokens are not revoked: ") +
                       error.what());
  }
  return "Signed out.";
}

}  // namespace velmora
