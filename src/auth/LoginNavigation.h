// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QUrl>
#include <functional>

namespace velmora {

/// Where a page of the sign-in wants to go.
enum class LoginNavigation {
  elsewhere,         ///< anywhere but to the program
  redirect,          ///< back to the program, with nothing
  redirectWithCode,  ///< back to the program, with what may be an authorisation code
};

/// Whether `request` leads back to the program: whether its address begins with `loopbackPrefix`. An empty
/// prefix begins nothing.
[[nodiscard]] bool isLoginRedirect(const QUrl &request, const QString &loopbackPrefix);

/// Tells what a navigation to `request` is, and first hands what follows its first "=" to `requestToken`,
/// undecoded, when it leads back to the program.
LoginNavigation followLoginNavigation(const QUrl &request, const QString &loopbackPrefix,
                                      const std::function<void(const QString &code)> &requestToken);

/// The page of a sign-in address; fatal when it is none.
[[nodiscard]] QUrl loginPage(const QString &loginUrl);

}  // namespace velmora
