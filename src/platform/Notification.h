// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace velmora {

/// Has the desktop show a message that goes by itself, both parts plain text. Waits for nobody; a desktop
/// that shows none is one line in the log. Main thread.
void showNotification(const QString &title, const QString &body);

}  // namespace velmora
