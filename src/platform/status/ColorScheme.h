// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <optional>

namespace velmora {

/// Whether the user wants a dark desktop, as the desktop's portal tells. Nothing here waits for it.
class ColorScheme final : public QObject {
  Q_OBJECT

 public:
  explicit ColorScheme(const QDBusConnection &bus);

  /// Absent when nobody knows, or not yet.
  [[nodiscard]] std::optional<bool> isDark() const { return m_isDark; }

 Q_SIGNALS:
  void changed();

 private Q_SLOTS:
  void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

 private:
  void take(const QVariant &value);

  QDBusConnection m_bus;
  std::optional<bool> m_isDark;
};

}  // namespace velmora
