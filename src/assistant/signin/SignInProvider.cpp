// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/SignInProvider.h"

#include <nlohmann/json.hpp>

#include "assistant/signin/Secret.h"
#include "assistant/signin/SignInPages.h"
#include "foundation/File.h"
#include "foundation/Log.h"
#include "foundation/StateFolder.h"

namespace velmora {
namespace {

constexpr auto kScope = "assistant";
constexpr auto kRedirectUri = "http://localhost/";
constexpr auto kAuthorize = "/authorize";
constexpr auto kToken = "/token";
constexpr auto kRevoke = "/revoke";

HttpResponse wrongMethod(const char *allowed) {
  return {.status = 405,
          .contentType = "text/plain; charset=utf-8",
          .body = "This takes " + std::string(allowed) + '\n',
          .fields = {{"Allow", allowed}}};
}

}  // namespace

SignInProvider::Settings SignInProvider::forThisUser(int port, bool isRecorded) {
  const auto folder = stateFolder();
  return {
      .listener = {.port = port},
      .stateFile = folder ? *folder / "sign-ins.json" : std::filesystem::path(),
      .clients = {{.id = "velmora", .secret = newSecret(), .name = "Velmora", .redirectUri = kRedirectUri}},
      .isRecorded = isRecorded,
      .complain = [warn = standardErrorSink()](std::string_view line) {
        warn("velmora-assistant: " + std::string(line));
      }};
}

SignInProvider::SignInProvider(const Settings &settings)
    : m_client(settings.clients.at(0)),
      m_clients(settings.clients),
      m_grants(settings.stateFile, settings.listener.clock, settings.complain),
      m_authorization(m_clients, m_grants, settings.listener.clock, kScope, settings.isRecorded),
      m_tokens(m_clients, m_grants),
      m_listener(settings.listener) {}

void SignInProvider::start() {
  m_listener.start([this](const HttpRequest &request) {
    HttpResponse response = serve(request);
    // An address that is not ours may hold anything, a code too.
    log("Sign-in: ", request.method, ' ', response.status == 404 ? "another address" : request.path, ": ",
        response.status);
    return response;
  });
}

std::string SignInProvider::scope() { return kScope; }

HttpResponse SignInProvider::serve(const HttpRequest &request) {
  const bool post = request.method == "POST";
  if (request.path == kAuthorize)
    return post ? m_authorization.decide(request.body) : m_authorization.ask(request.query, request.language);
  if (request.path == kToken) return post ? m_tokens.token(request) : wrongMethod("POST");
  if (request.path == kRevoke) return post ? m_tokens.revoke(request) : wrongMethod("POST");
  return signInErrorPage(404, "There is no such page.", "Sign in from the application.");
}

void SignInProvider::writeClientDescription(const std::filesystem::path &folder) const {
  const std::string origin = "http://127.0.0.1:" + std::to_string(port());
  // The second address is the one that clients take.
  const nlohmann::json description{
      {"installed",
       {{"client_id", m_client.id},
        {"client_secret", m_client.secret},
        {"auth_uri", origin + kAuthorize},
        {"token_uri", origin + kToken},
        {"revocation_uri", origin + kRevoke},
        {"redirect_uris", {"urn:ietf:wg:oauth:2.0:oob", m_client.redirectUri}}}}};
  writeFile(folder / "google_oauth2.json", description.dump(2) + '\n', 0600);
}

}  // namespace velmora
