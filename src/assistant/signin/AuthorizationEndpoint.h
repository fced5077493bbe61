// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>

#include "assistant/signin/FormFields.h"
#include "assistant/signin/GrantStore.h"
#include "assistant/signin/HttpListener.h"
#include "assistant/signin/ShortLived.h"
#include "assistant/signin/SignInClients.h"

namespace velmora {

/// Where the user's browser asks for a sign-in and the user decides (RFC 6749, 3.1 and 4.1). Any thread.
class AuthorizationEndpoint {
 public:
  /// Clients and grants outlive it. `scope` is the only one there is. The consent page tells
  /// `isRecorded`.
  AuthorizationEndpoint(const SignInClients &clients, GrantStore &grants, SignInClock clock,
                        std::string scope, bool isRecorded);

  /// The consent page, in the best of the languages that there is; an error goes to the client when that and
  /// its address are known, else to the user.
  [[nodiscard]] HttpResponse ask(const std::string &query, const std::string &language);

  /// What the user decided on a consent page, once for each page: leads to the client with a code or an
  /// error. The page's own secret in the form proves that it is that page which sends it.
  [[nodiscard]] HttpResponse decide(const std::string &form);

 private:
  /// What a consent page was shown for.
  struct Asked {
    Authorisation authorisation;
    std::string state;  ///< the client's own, handed back
  };

  const SignInClients &m_clients;
  GrantStore &m_grants;
  const SignInClock m_clock;
  const std::string m_scope;
  const bool m_isRecorded;
  std::mutex m_mutex;  // guards m_asked
  ShortLived<Asked> m_asked;
};

}  // namespace velmora
