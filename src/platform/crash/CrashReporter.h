// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What is left of a crash for the next start: a text file that the user may send or throw away.
//
//   startCrashReporter(folder);
//   for (const auto &report : pendingCrashReports(folder)) ask(report);
#pragma once

#include <filesystem>
#include <vector>

namespace velmora {

/// From now on, before the program ends by a fault, by `abort` or by an exception that nobody catches, a
/// report is written into `folder`, which is made with mode 0700: version, time, signal, thread, the calls in
/// progress and what is mapped where. Never the arguments, the environment or anything of the memory. Then
/// the program ends as it would have. Not in builds with a sanitizer, which reports itself. A folder that
/// cannot be made is one line in the log. Once, on the main thread, before other threads; a stack overflow of
/// another thread leaves no report.
void startCrashReporter(const std::filesystem::path &folder);

/// The reports of earlier runs that were neither kept nor discarded, the oldest first.
[[nodiscard]] std::vector<std::filesystem::path> pendingCrashReports(const std::filesystem::path &folder);

/// Puts a pending report aside, under another name beside it.
void keepCrashReport(const std::filesystem::path &report);
/// Deletes it.
void discardCrashReport(const std::filesystem::path &report);

}  // namespace velmora
