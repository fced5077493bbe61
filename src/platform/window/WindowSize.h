// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

class QWidget;

namespace velmora {

/// Makes a window that is yet to be shown no larger than its screen has room for, whose panels and whose own
/// title bar take some of it. Main thread.
void boundToScreen(QWidget &window);

}  // namespace velmora
