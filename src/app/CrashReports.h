// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace velmora {

/// From now on a crash leaves a report in the user's state folder, which goes nowhere by itself. Before there
/// are other threads.
void startCrashReports();

/// Asks the user what to do with the report of an earlier crash, if there is one: to keep it for whoever
/// mends the program, or to delete it. Main thread.
void askAboutCrashReports();

}  // namespace velmora
