// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <QUrl>

namespace velmora {

struct DeploymentLinks;

/// What the application says about itself. A text or an address that is empty is not shown.
struct ApplicationInformation {
  QString name;
  QString version;
  QString copyright;
  QUrl forum;
  QUrl fanPage;
  QUrl microblog;
  QUrl home;

  /// That of this build, with the pages of those who run the service.
  [[nodiscard]] static ApplicationInformation ofThisBuild(const DeploymentLinks &links);
};

}  // namespace velmora
