// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <optional>

#include "app/SingleInstance.h"

namespace velmora {

/// The claim to a name on the session bus, under which desktops start applications and call their actions.
class BusInstance final : public QObject, public SingleInstance {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  /// Null with `isTaken` when another process has the name, null without when there is no bus.
  [[nodiscard]] static std::unique_ptr<SingleInstance> claim(const Handler &handler, bool &isTaken);
  /// Absent when there is no bus.
  [[nodiscard]] static std::optional<bool> send(const QString &command);

  ~BusInstance() override;

 public Q_SLOTS:
  void Activate(const QVariantMap &platformData);
  /// The application has no documents: to open one is to come forward.
  void Open(const QStringList &addresses, const QVariantMap &platformData);
  void ActivateAction(const QString &name, const QVariantList &parameter, const QVariantMap &platformData);

 private:
  using SingleInstance::SingleInstance;
};

}  // namespace velmora
