// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The program's log: lines of a fixed label followed by what it is about, on standard output unless a program
// sends them elsewhere.
//
//   log("Initial send error: ", error.what());
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <string_view>

namespace velmora {

/// Takes one finished line without its newline. Called on whichever thread logs, one line at a time.
using LogSink = std::function<void(std::string_view line)>;

/// Sends later lines to `sink`; an empty sink drops them. Any thread.
void setLogSink(LogSink sink);

/// A sink that writes each line to standard output (the default) or standard error in one piece.
LogSink standardOutputSink();
LogSink standardErrorSink();

/// False when lines are dropped, so that a caller can spare the work of rendering them. Any thread.
[[nodiscard]] bool logEnabled();

/// Writes one line; line breaks and other control characters inside it are escaped, so that text from outside
/// cannot pass for a line of ours. Any thread.
void logLine(std::string_view line);

/// The same of several streamable pieces put together.
template <typename... Pieces>
void log(const Pieces &...pieces) {
  if (!logEnabled()) return;
  std::ostringstream line;
  (line << ... << pieces);
  logLine(std::move(line).str());
}

}  // namespace velmora
