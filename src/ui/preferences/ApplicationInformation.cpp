// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/preferences/ApplicationInformation.h"

#include "foundation/Deployment.h"

namespace velmora {

ApplicationInformation ApplicationInformation::ofThisBuild(const DeploymentLinks &links) {
  const auto url = [](const std::string &address) {
    return QUrl(QString::fromStdString(address), QUrl::StrictMode);
  };
  return {.name = QStringLiteral("Velmora"),
          .version = QStringLiteral(VELMORA_VERSION),
          .copyright = QStringLiteral("© 2026 The Velmora developers"),
          .forum = url(links.forum),
          .fanPage = url(links.fanPage),
          .microblog = url(links.microblog),
          .home = url(links.home)};
}

}  // namespace velmora
