// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "assistant/signin/FormFields.h"
#include "assistant/signin/GrantStore.h"
#include "assistant/signin/HttpListener.h"
#include "assistant/signin/SignInClients.h"

namespace velmora {

/// Where clients exchange codes, refresh (RFC 6749, 3.2) and revoke (RFC 7009). Any thread.
class TokenEndpoint {
 public:
  /// Both outlive it.
  TokenEndpoint(const SignInClients &clients, GrantStore &grants) : m_clients(clients), m_grants(grants) {}

  [[nodiscard]] HttpResponse token(const HttpRequest &request);
  [[nodiscard]] HttpResponse revoke(const HttpRequest &request);

 private:
  /// Runs `serve` for the form and the client of a request, or answers why not.
  template <typename Serve>
  HttpResponse authenticated(const HttpRequest &request, Serve serve);
  HttpResponse exchange(const FormFields &fields, const SignInClient &client);
  HttpResponse refresh(const FormFields &fields, const SignInClient &client);

  const SignInClients &m_clients;
  GrantStore &m_grants;
};

}  // namespace velmora
