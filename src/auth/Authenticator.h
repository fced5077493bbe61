// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <functional>

#include "auth/HttpClient.h"
#include "foundation/Deployment.h"
#include "foundation/UserDefaults.h"

namespace velmora {

/// The account: where the user signs in, and what becomes of the code that the sign-in brings. What it learns
/// is in the settings under the keys of `TokenStore.h`, where all authenticators of the program meet.
///
/// Main thread only, completions included; one that is destroyed calls and stores nothing afterwards.
class Authenticator {
 public:
  using Completion = std::function<void(bool signedIn)>;

  /// Reads the client description google_oauth2.json of `deployment`, fatally when there is none. Members
  /// missing in it are empty. `defaults` outlives the authenticator.
  Authenticator(const Deployment &deployment, UserDefaults &defaults);

  /// The address of the page on which the user signs in.
  [[nodiscard]] const QString &loginUrl() const { return m_loginUrl; }
  void setLoginUrl(const QString &url) { m_loginUrl = url; }

  /// Exchanges an authorisation code for tokens. Any JSON answer signs the user in, an error's too; no answer
  /// leaves the store as it is, with one line in the log.
  void requestToken(const QString &code);

  /// Whether the user is signed in, after a refresh when the access token has expired.
  void checkLoginStatus(Completion completion);

  /// Asks for a new access token; true when the service answered. An ordinary answer is acknowledged only:
  /// the service prolongs the life of the token that is stored.
  void refreshToken(Completion completion);

  /// Marks the user as signed out.
  void logout();

 private:
  QString m_scope;
  QString m_authUrl;
  QString m_tokenUrl;
  QString m_redirectUrl;
  QString m_clientId;
  QString m_clientSecret;
  QString m_loginUrl;
  UserDefaults &m_defaults;
  HttpClient m_http;
};

}  // namespace velmora
