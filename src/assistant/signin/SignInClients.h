// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// A program that may ask for a sign-in.
struct SignInClient {
  std::string id;
  std::string secret;
  std::string name;         ///< what the consent page calls it
  std::string redirectUri;  ///< the only one that is redirected to
};

/// Immutable; any thread.
class SignInClients {
 public:
  explicit SignInClients(const std::vector<SignInClient> &clients);

  /// Null when there is none.
  [[nodiscard]] const SignInClient *find(std::string_view id) const;
  /// The same when `secret` is its secret; takes as long when it is not.
  [[nodiscard]] const SignInClient *authenticate(std::string_view id, std::string_view secret) const;

 private:
  const std::vector<SignInClient> m_clients;
};

}  // namespace velmora
