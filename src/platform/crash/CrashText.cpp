// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/crash/CrashText.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace velmora {
namespace {

void writeAll(int file, const char *bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(file, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

std::string_view nameOf(int signal) {
  switch (signal) {
    case SIGSEGV: return "SIGSEGV";
    case SIGABRT: return "SIGABRT";
    case SIGBUS: return "SIGBUS";
    case SIGFPE: return "SIGFPE";
    case SIGILL: return "SIGILL";
    default: return "signal";
  }
}

}  // namespace

CrashText &CrashText::text(std::string_view text) {
  const std::size_t count = std::min(text.size(), sizeof m_text - 1 - m_length);
  std::copy_n(text.data(), count, m_text + m_length);
  m_length += count;
  m_text[m_length] = '\0';
  return *this;
}

CrashText &CrashText::number(unsigned long value) { return padded(value, 1); }

CrashText &CrashText::padded(unsigned long value, std::size_t digits) {
  std::array<char, 24> reversed{};
  std::size_t count = 0;
  for (; value > 0 || count < digits; value /= 10) reversed[count++] = static_cast<char>('0' + value % 10);
  std::reverse(reversed.begin(), reversed.begin() + count);
  return text({reversed.data(), count});
}

CrashText &CrashText::hexadecimal(unsigned long value) {
  text("0x");
  int shift = 60;
  while (shift > 0 && (value >> shift) == 0) shift -= 4;
  for (; shift >= 0; shift -= 4) text({&"0123456789abcdef"[(value >> shift) & 15], 1});
  return *this;
}

CrashText &CrashText::time(std::time_t seconds) {
  // The library's calendar takes a lock. Years begin in March here, so that the leap day is the last one.
  const auto all = static_cast<unsigned long>(seconds);
  const unsigned long days = all / 86400 + 719468;  // since 0000-03-01
  const unsigned long era = days / 146097, day = days % 146097;
  const unsigned long year = (day - day / 1460 + day / 36524 - day / 146096) / 365;
  const unsigned long dayOfYear = day - (365 * year + year / 4 - year / 100);
  const unsigned long month = (5 * dayOfYear + 2) / 153;
  padded(era * 400 + year + (month >= 10 ? 1 : 0), 4).text("-");
  padded(month < 10 ? month + 3 : month - 9, 2).text("-").padded(dayOfYear - (153 * month + 2) / 5 + 1, 2);
  text("T").padded(all / 3600 % 24, 2).text(":").padded(all / 60 % 60, 2).text(":").padded(all % 60, 2);
  return text("Z");
}

void CrashText::writeLine(int file) const {
  writeAll(file, m_text, m_length);
  writeAll(file, "\n", 1);
}

void writeCrashHeader(int file, int signal, const siginfo_t &info, std::time_t time, const char *exception) {
  CrashText().text("Velmora " VELMORA_VERSION).writeLine(file);
  CrashText().text("time: ").time(time).writeLine(file);
  CrashText line;
  line.text("signal: ").text(nameOf(signal)).text(", code ");
  if (info.si_code < 0) line.text("-");
  line.number(static_cast<unsigned long>(std::abs(info.si_code)));
  if (info.si_code > 0) line.text(", at ").hexadecimal(reinterpret_cast<unsigned long>(info.si_addr));
  line.writeLine(file);
  if (exception) CrashText().text("exception: ").text(exception).writeLine(file);
  char thread[16] = {};
  ::prctl(PR_GET_NAME, thread);
  CrashText()
      .text("thread: ")
      .text(thread)
      .text(::gettid() == ::getpid() ? ", the main one" : "")
      .writeLine(file);
}

}  // namespace velmora
