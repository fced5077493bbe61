// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/GrantStore.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace velmora {
namespace {

constexpr std::size_t kMostCodes = 64;

}  // namespace

GrantStore::GrantStore(std::filesystem::path file, SignInClock clock, GrantFile::Complaint complain)
    : m_clock(std::move(clock)),
      m_file(std::move(file), std::move(complain)),
      m_codes(kMostCodes, kCodeLife) {}

std::int64_t GrantStore::secondsFromNow(std::chrono::seconds more) const {
  return std::chrono::floor<std::chrono::seconds>(m_clock() + more).time_since_epoch().count();
}

std::string GrantStore::newCode(Authorisation authorisation) {
  const std::lock_guard lock(m_mutex);
  return m_codes.add(std::move(authorisation), m_clock());
}

std::optional<TokenAnswer> GrantStore::exchange(std::string_view code, std::string_view clientId,
                                                std::string_view redirectUri) {
  const std::lock_guard lock(m_mutex);
  const std::string codeDigest = digestOf(code);
  const Authorisation *found = m_codes.find(code, m_clock());
  if (!found) {
    change([&](auto &grants) {
      std::erase_if(grants, [&](const Grant &grant) { return grant.codeDigest == codeDigest; });
    });
    return std::nullopt;
  }
  if (found->clientId != clientId || found->redirectUri != redirectUri) return std::nullopt;
  const auto authorisation = *m_codes.take(code, m_clock());
  const std::string refreshToken = newSecret();
  const std::string accessToken = secretDerivedFrom(refreshToken);
  change([&](auto &grants) {
    grants.insert(grants.begin(), Grant{.clientId = authorisation.clientId,
                                        .scope = authorisation.scope,
                                        .codeDigest = codeDigest,
                                        .accessDigest = digestOf(accessToken),
                                        .refreshDigest = digestOf(refreshToken),
                                        .accessExpiry = secondsFromNow(kAccessLife),
                                        .lastUse = secondsFromNow()});
  });
  return TokenAnswer{.accessToken = accessToken, .refreshToken = refreshToken, .scope = authorisation.scope};
}

std::optional<TokenAnswer> GrantStore::refresh(std::string_view refreshToken, std::string_view clientId) {
  const std::lock_guard lock(m_mutex);
  const std::string digest = digestOf(refreshToken);
  std::optional<TokenAnswer> answer;
  change([&](auto &grants) {
    const auto found = std::find_if(grants.begin(), grants.end(), [&](const Grant &grant) {
      return grant.refreshDigest == digest && grant.clientId == clientId;
    });
    if (found == grants.end()) return;
    found->lastUse = secondsFromNow();
    found->accessExpiry = secondsFromNow(kAccessLife);
    answer = TokenAnswer{
        .accessToken = secretDerivedFrom(refreshToken), .refreshToken = std::nullopt, .scope = found->scope};
  });
  // To be told that its token is no longer good would sign the client out.
  if (!answer && !m_file.isReadable()) throw std::runtime_error("the sign-ins cannot be read now");
  return answer;
}

bool GrantStore::revoke(std::string_view token, std::string_view clientId) {
  const std::lock_guard lock(m_mutex);
  const std::string digest = digestOf(token);
  m_acceptedForThisRun.erase(digest);
  bool allowed = true;
  change([&](auto &grants) {
    const auto found = std::find_if(grants.begin(), grants.end(), [&](const Grant &grant) {
      return grant.refreshDigest == digest || grant.accessDigest == digest;
    });
    if (found == grants.end()) return;
    allowed = found->clientId == clientId;
    if (allowed) grants.erase(found);
  });
  return allowed;
}

void GrantStore::acceptForThisRun(std::string_view token) {
  const std::lock_guard lock(m_mutex);
  m_acceptedForThisRun.insert(digestOf(token));
}

bool GrantStore::isLive(std::string_view token) {
  const std::string digest = digestOf(token);
  const std::lock_guard lock(m_mutex);
  if (m_acceptedForThisRun.contains(digest)) return true;
  if (auto changed = m_file.readChanges()) m_grants = *std::move(changed);
  const std::int64_t now = secondsFromNow();
  return std::any_of(m_grants.begin(), m_grants.end(), [&](const Grant &grant) {
    return grant.accessDigest == digest && now < grant.accessExpiry;
  });
}

}  // namespace velmora
