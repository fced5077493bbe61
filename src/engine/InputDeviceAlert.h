// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace velmora {

/// Tells the user that nothing can be heard: no input device is attached. Main thread.
void alertWithoutInputDevice();

}  // namespace velmora
