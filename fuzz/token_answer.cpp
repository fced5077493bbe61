// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Answers of a token endpoint through the account. The HTTP client here answers at once, from the input.
#include <QDateTime>

#include "auth/Authenticator.h"
#include "auth/HttpClient.h"
#include "auth/HttpEngine.h"
#include "auth/TokenStore.h"
#include "fuzz/Input.h"
#include "fuzz/Setup.h"
#include "tests/support/TemporaryFolder.h"

namespace velmora {
namespace {

std::string theAnswer;

const Deployment &deployment() {
  static const tests::TemporaryFolder folder;
  static const Deployment made = [] {
    (void)folder.write("google_oauth2.json", R"({"installed": {"client_id": "c", "client_secret": "s",
      "auth_uri": "https://a.example/", "token_uri": "https://t.example/", "redirect_uris": ["x", "http://localhost"]}})");
    return Deployment{.folder = folder.path(), .host = "localhost"};
  }();
  return made;
}

bool isTextOrAbsent(const QVariant &value) {
  return !value.isValid() || value.typeId() == QMetaType::QString;
}

}  // namespace

HttpClient::HttpClient(std::filesystem::path roots, std::chrono::milliseconds timeout)
    : m_roots(std::move(roots)), m_timeout(timeout) {}
HttpClient::~HttpClient() = default;
void HttpClient::postForm(const QString & /*url*/, const Parameters & /*parameters*/, Completion completion) {
  const auto json = JsonValue::parse(theAnswer);
  completion(json ? Answer(*json) : Answer(HttpError{"the answer is no JSON"}));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const bool isRefresh = input.byte() % 2 != 0;
  theAnswer = input.rest();
  const auto json = JsonValue::parse(theAnswer);
  UserDefaults defaults;
  Authenticator account(deployment(), defaults);
  if (isRefresh) {
    // A refresh answered with null ends the program by intent.
    if (json && json->isNull()) return 0;
    defaults.setObject(true, kLoggedInKey);
    bool told = false;
    account.checkLoginStatus([&](bool signedIn) {
      told = true;
      fuzz::require(signedIn == json.has_value(), "any JSON is an answer, nothing else is");
    });
    fuzz::require(told, "a refresh is told of");
  } else {
    account.requestToken(QStringLiteral("code"));
    fuzz::require(defaults.boolForKey(kLoggedInKey) == json.has_value(),
                  "any JSON signs in, nothing else does");
    fuzz::require(isTextOrAbsent(defaults.objectForKey(kAuthTokenKey)), "an access token is a text");
    fuzz::require(isTextOrAbsent(defaults.objectForKey(kRefreshTokenKey)), "a refresh token is a text");
    const auto expiry = defaults.objectForKey(kExpiresInKey);
    fuzz::require(!expiry.isValid() || expiry.toDateTime().isValid(), "an expiry is a date");
  }
  return 0;
}

}  // namespace velmora
