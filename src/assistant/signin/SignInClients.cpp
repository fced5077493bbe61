// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/SignInClients.h"

#include <algorithm>

#include "assistant/signin/Secret.h"

namespace velmora {

SignInClients::SignInClients(const std::vector<SignInClient> &clients) : m_clients(clients) {}

const SignInClient *SignInClients::find(std::string_view id) const {
  const auto found = std::find_if(m_clients.begin(), m_clients.end(),
                                  [&](const SignInClient &client) { return client.id == id; });
  return found == m_clients.end() ? nullptr : &*found;
}

const SignInClient *SignInClients::authenticate(std::string_view id, std::string_view secret) const {
  const SignInClient *client = find(id);
  const bool right = matchesDigest(secret, digestOf(client ? client->secret : std::string()));
  return client && right ? client : nullptr;
}

}  // namespace velmora
