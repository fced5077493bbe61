// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/AuthorizationEndpoint.h"

#include <utility>

#include "assistant/signin/SignInPages.h"

namespace velmora {
namespace {

constexpr std::size_t kMostPages = 64;
constexpr std::chrono::minutes kPageLife{10};

/// Back to the client. The code or the error stands first, where simple clients look for it.
HttpResponse redirect(const std::string &uri, const std::string &name, const std::string &value,
                      const std::string &state) {
  std::string location = uri + '?' + name + '=' + value;
  if (!state.empty()) location += "&state=" + percentEncoded(state);
  return {.status = 303, .fields = {{"Location", location}}};
}

HttpResponse malformed() {
  return signInErrorPage(400, "The request for this sign-in is malformed.",
                         "Close this page and sign in again from the application.");
}

}  // namespace

AuthorizationEndpoint::AuthorizationEndpoint(const SignInClients &clients, GrantStore &grants,
                                             SignInClock clock, std::string scope, bool isRecorded)
    : m_clients(clients),
      m_grants(grants),
      m_clock(std::move(clock)),
      m_scope(std::move(scope)),
      m_isRecorded(isRecorded),
      m_asked(kMostPages, kPageLife) {}

HttpResponse AuthorizationEndpoint::ask(const std::string &query, const std::string &language) {
  const auto fields = parseForm(query);
  if (!fields) return malformed();
  const SignInClient *client = m_clients.find(valueOf(*fields, "client_id"));
  // To redirect to an address that is not the client's own would make this a tool of others.
  if (!client) {
    return signInErrorPage(400, "The application that asks for this sign-in is not known here.",
                           "Close this page and sign in again from the application.");
  }
  if (valueOf(*fields, "redirect_uri") != client->redirectUri) {
    return signInErrorPage(400, "The address that this sign-in would lead to is not the application's own.",
                           "Close this page and sign in again from the application.");
  }
  const std::string state = valueOf(*fields, "state");
  const std::string type = valueOf(*fields, "response_type");
  if (type != "code") {
    const char *const error = type.empty() ? "invalid_request" : "unsupported_response_type";
    return redirect(client->redirectUri, "error", error, state);
  }
  const std::string scope = valueOf(*fields, "scope");
  if (!scope.empty() && scope != m_scope)
    return redirect(client->redirectUri, "error", "invalid_scope", state);

  const std::lock_guard lock(m_mutex);
  const std::string consent = m_asked.add(
      {.authorisation = {.clientId = client->id, .redirectUri = client->redirectUri, .scope = m_scope},
       .state = state},
      m_clock());
  return consentPage(client->name, consent, client->redirectUri, m_isRecorded, language);
}

HttpResponse AuthorizationEndpoint::decide(const std::string &form) {
  const auto fields = parseForm(form);
  if (!fields) return malformed();
  const std::string decision = valueOf(*fields, "decision");
  if (decision != "allow" && decision != "cancel") return malformed();
  std::optional<Asked> asked;
  {
    const std::lock_guard lock(m_mutex);
    asked = m_asked.take(valueOf(*fields, "consent"), m_clock());
  }
  if (!asked) {
    return signInErrorPage(403, "This page was already answered, or has been open for too long.",
                           "Close it and sign in again from the application.");
  }
  const std::string uri = asked->authorisation.redirectUri;
  if (decision == "cancel") return redirect(uri, "error", "access_denied", asked->state);
  return redirect(uri, "code", m_grants.newCode(std::move(asked->authorisation)), asked->state);
}

}  // namespace velmora
