// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What may be done inside of a signal handler: no memory is taken, no lock, no buffer of anybody else's used.
#pragma once

#include <climits>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <string_view>

namespace velmora {

/// A line that is put together; what does not fit is cut off.
class CrashText {
 public:
  CrashText &text(std::string_view text);
  CrashText &number(unsigned long value);
  CrashText &hexadecimal(unsigned long value);
  /// As 2026-11-21T19:12:42Z.
  CrashText &time(std::time_t seconds);
  [[nodiscard]] const char *c_str() const { return m_text; }
  /// Writes it to a descriptor with a newline.
  void writeLine(int file) const;

 private:
  CrashText &padded(unsigned long value, std::size_t digits);

  char m_text[PATH_MAX] = {};
  std::size_t m_length = 0;
};

/// Version, time, signal and thread. `exception` is the name of the type of an exception that nobody caught,
/// null for none.
void writeCrashHeader(int file, int signal, const siginfo_t &info, std::time_t time, const char *exception);

/// The calls in progress where the signal came, as places in modules, and what is mapped where. `context` is
/// what the signal handler was given.
void writeCrashFrames(int file, void *context);
/// Has the unwinder do what it does at its first use only.
void warmUpCrashFrames();

}  // namespace velmora
