// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Log.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <mutex>

namespace velmora {
namespace {

/// One write per line keeps the lines of several threads and processes apart. A reader that is gone, or a
/// full disk, loses the line: there is nowhere left to say so.
void writeLine(int descriptor, std::string_view line) {
  std::string whole(line);
  whole += '\n';
  for (std::size_t done = 0; done < whole.size();) {
    const ssize_t written = ::write(descriptor, whole.data() + done, whole.size() - done);
    if (written < 0) return;
    done += static_cast<std::size_t>(written);
  }
}

struct Sink {
  std::mutex mutex;
  LogSink sink = standardOutputSink();
  std::atomic<bool> enabled{true};
};

Sink &theSink() {
  // Never destroyed: threads of libraries may still log while the process exits.
  static Sink *const sink = new Sink;
  return *sink;
}

std::string escaped(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      out += c;
    } else if (c == '\n') {
      out += "\\n";
    } else {
      char code[5];
      std::snprintf(code, sizeof code, "\\x%02x", byte);
      out += code;
    }
  }
  return out;
}

}  // namespace

LogSink standardOutputSink() {
  return [](std::string_view line) { writeLine(STDOUT_FILENO, line); };
}

LogSink standardErrorSink() {
  return [](std::string_view line) { writeLine(STDERR_FILENO, line); };
}

void setLogSink(LogSink sink) {
  Sink &target = theSink();
  const std::lock_guard lock(target.mutex);
  target.enabled = static_cast<bool>(sink);
  target.sink = std::move(sink);
}

bool logEnabled() { return theSink().enabled; }

void logLine(std::string_view line) {
  Sink &target = theSink();
  const std::string clean = escaped(line);
  const std::lock_guard lock(target.mutex);
  if (target.sink) target.sink(clean);
}

}  // namespace velmora
