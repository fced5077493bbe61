// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace velmora {

/// Whether translucent pixels of a window show what is behind it now. Without that they are black. Asks the X
/// server, a matter of microseconds; everything that is no X11 composes. Main thread.
[[nodiscard]] bool desktopIsComposited();

}  // namespace velmora
