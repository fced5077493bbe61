// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The sign-in of the local assistant: an OAuth 2.0 authorisation server on 127.0.0.1.
//
//   SignInProvider signIn(SignInProvider::forThisUser(0, false));
//   AssistantProvider provider([&](auto token) { return signIn.isLive(token); }, Dialogue());
//   signIn.writeClientDescription(folder);
//   signIn.start();
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "assistant/signin/AuthorizationEndpoint.h"
#include "assistant/signin/GrantStore.h"
#include "assistant/signin/HttpListener.h"
#include "assistant/signin/SignInClients.h"
#include "assistant/signin/TokenEndpoint.h"

namespace velmora {

/// Any thread. Logs each request without anything secret.
class SignInProvider {
 public:
  struct Settings {
    HttpListener::Settings listener = {};  ///< its clock is everybody's
    std::filesystem::path stateFile = {};  ///< empty: grants are kept for this run only
    std::vector<SignInClient> clients = {};
    bool isRecorded = false;  ///< what is said is kept on disk, and who signs in is told so
    GrantFile::Complaint complain = [](std::string_view) {};
  };

  /// What a program of this user's needs: Velmora as the client, with a secret for this run, and the grants
  /// in the user's folder for state. Complaints go to standard error.
  [[nodiscard]] static Settings forThisUser(int port, bool isRecorded);

  /// Takes the port. Throws `std::runtime_error`.
  explicit SignInProvider(const Settings &settings);

  /// Begins to answer. Once.
  void start();
  [[nodiscard]] int port() const { return m_listener.port(); }
  /// Of whoever signs in: what deployment.json must name.
  [[nodiscard]] static std::string scope();

  /// Writes google_oauth2.json, readable by its owner only, for the first client. Throws
  /// `std::runtime_error`.
  void writeClientDescription(const std::filesystem::path &folder) const;

  /// Takes a token that did not come from a sign-in, for this run.
  void acceptForThisRun(std::string_view token) { m_grants.acceptForThisRun(token); }
  /// Whether the bearer of `token` may be served now.
  [[nodiscard]] bool isLive(std::string_view token) { return m_grants.isLive(token); }

 private:
  HttpResponse serve(const HttpRequest &request);

  const SignInClient m_client;
  const SignInClients m_clients;
  GrantStore m_grants;
  AuthorizationEndpoint m_authorization;
  TokenEndpoint m_tokens;
  HttpListener m_listener;  // last: it stops before what it serves goes
};

}  // namespace velmora
