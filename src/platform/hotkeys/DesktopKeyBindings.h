// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How desktops write down their key bindings. Nothing here waits for anyone.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

#include "platform/hotkeys/SymbolicHotKeys.h"

namespace velmora {

/// The combination that GNOME writes as "<Super><Shift>F1"; nothing when it is none, or one of a key or
/// modifier that no shortcut has.
[[nodiscard]] std::optional<SymbolicHotKey> gnomeHotKey(const QString &accelerator);

/// The texts of a setting as gsettings(1) prints it: "['<Super>a', '<Super>b']", "'<Super>a'" or "@as []".
[[nodiscard]] QStringList gnomeTexts(const QString &value);

/// What `gsettings list-recursively` prints of GNOME's key bindings.
struct GnomeKeyBindings {
  std::vector<SymbolicHotKey> hotKeys;
  QStringList customBindings;  ///< the paths of those that the user has made
};
[[nodiscard]] GnomeKeyBindings gnomeKeyBindings(const QByteArray &settings);

/// What stands in KDE's file of global shortcuts.
[[nodiscard]] std::vector<SymbolicHotKey> kdeHotKeys(const QByteArray &file);

}  // namespace velmora
