// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the sign-in has given and may still give: codes, and grants with their tokens.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "assistant/signin/GrantFile.h"
#include "assistant/signin/ShortLived.h"

namespace velmora {

/// What an authorisation code stands for.
struct Authorisation {
  std::string clientId;
  std::string redirectUri;
  std::string scope;
};

/// What a client gets for a code or a refresh token.
struct TokenAnswer {
  std::string accessToken;
  std::optional<std::string> refreshToken;  ///< absent when the client's own stays good
  std::string scope;
};

/// Any thread. No secret is kept, only digests. The access token follows from the refresh token, so that a
/// refresh can give the same one again although it is not kept.
class GrantStore {
 public:
  static constexpr std::chrono::seconds kCodeLife{60};
  static constexpr std::chrono::seconds kAccessLife{3600};

  /// Grants are kept in `file`, codes in memory.
  GrantStore(std::filesystem::path file, SignInClock clock, GrantFile::Complaint complain);

  /// A code for what the user allowed, for one use within a minute.
  [[nodiscard]] std::string newCode(Authorisation authorisation);

  /// Tokens for `code`; nothing when it was not given to this client for this address or is no longer good. A
  /// code that comes a second time is in wrong hands: what it gave is revoked.
  [[nodiscard]] std::optional<TokenAnswer> exchange(std::string_view code, std::string_view clientId,
                                                    std::string_view redirectUri);

  /// Prolongs the access token of a grant of this client; nothing when it has no such grant. Throws
  /// `std::runtime_error` when that is not known because the file cannot be read.
  [[nodiscard]] std::optional<TokenAnswer> refresh(std::string_view refreshToken, std::string_view clientId);

  /// Ends the grant that either token belongs to. False when that is another client's; a token that nobody
  /// knows is as good as revoked.
  [[nodiscard]] bool revoke(std::string_view token, std::string_view clientId);

  /// Takes `token` for this run, until it is revoked by anyone.
  void acceptForThisRun(std::string_view token);

  /// Whether `token` is an access token that is good now.
  [[nodiscard]] bool isLive(std::string_view token);

 private:
  void change(const std::function<void(std::vector<Grant> &)> &change) { m_file.change(m_grants, change); }
  [[nodiscard]] std::int64_t secondsFromNow(std::chrono::seconds more = {}) const;

  const SignInClock m_clock;
  std::mutex m_mutex;  // guards everything below
  GrantFile m_file;
  std::vector<Grant> m_grants;
  ShortLived<Authorisation> m_codes;
  std::set<std::string> m_acceptedForThisRun;  // digests
};

}  // namespace velmora
