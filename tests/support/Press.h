// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>
#include <QStringList>

namespace velmora::tests {

/// Presses what a person would, on the display of this program: `arguments` are those of xdotool.
inline bool press(const QStringList &arguments) {
  return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

}  // namespace velmora::tests
