// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#define UNW_LOCAL_ONLY
#include <fcntl.h>
#include <libunwind.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "platform/crash/CrashText.h"

namespace velmora {
namespace {

constexpr int kMostFrames = 100;

/// /proc/self/maps as it was when the signal came; a static place, since nothing can be allocated.
std::array<char, 512 * 1024> theMaps;

std::string_view readMaps() {
  const int file = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  std::size_t count = 0;
  while (count < theMaps.size()) {
    const ssize_t got = ::read(file, theMaps.data() + count, theMaps.size() - count);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    count += static_cast<std::size_t>(got);
  }
  ::close(file);
  return {theMaps.data(), count};
}

unsigned long takeHexadecimal(std::string_view &text) {
  unsigned long value = 0;
  for (; !text.empty(); text.remove_prefix(1)) {
    const char c = text.front();
    const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    if (digit < 0) break;
    value = value * 16 + static_cast<unsigned long>(digit);
  }
  return value;
}

/// One line: begin-end rights offset device inode path.
struct Mapping {
  unsigned long begin = 0, end = 0, offset = 0;
  std::string_view path = {};
};

Mapping takeMapping(std::string_view &maps) {
  std::string_view line = maps.substr(0, maps.find('\n'));
  maps.remove_prefix(std::min(line.size() + 1, maps.size()));
  Mapping mapping;
  const std::size_t path = line.find('/');
  if (path != std::string_view::npos) mapping.path = line.substr(path);
  mapping.begin = takeHexadecimal(line);
  line.remove_prefix(std::min<std::size_t>(1, line.size()));
  mapping.end = takeHexadecimal(line);
  line.remove_prefix(std::min<std::size_t>(6, line.size()));
  mapping.offset = takeHexadecimal(line);
  return mapping;
}

/// The module without its folder, and the place in it as addr2line(1) takes it.
void appendPlace(CrashText &line, unsigned long address, std::string_view maps) {
  unsigned long base = 0;
  std::string_view module;
  while (!maps.empty()) {
    const Mapping mapping = takeMapping(maps);
    if (mapping.path.empty()) continue;
    if (mapping.path != module) base = mapping.begin - mapping.offset;
    module = mapping.path;
    if (address < mapping.begin || address >= mapping.end) continue;
    line.text(" ").text(module.substr(module.rfind('/') + 1)).text("+").hexadecimal(address - base);
    return;
  }
}

void writeCalls(int file, void *context, std::string_view maps) {
  unw_cursor_t cursor;
  if (unw_init_local2(&cursor, static_cast<unw_context_t *>(context), UNW_INIT_SIGNAL_FRAME) != 0) return;
  for (int number = 0; number < kMostFrames; ++number) {
    unw_word_t address = 0;
    if (unw_get_reg(&cursor, UNW_REG_IP, &address) != 0 || address == 0) return;
    CrashText line;
    line.text("#").number(static_cast<unsigned long>(number)).text(" ").hexadecimal(address);
    // Where a call returns to may lie behind the end of the function that made it.
    appendPlace(line, number == 0 ? address : address - 1, maps);
    line.writeLine(file);
    if (unw_step(&cursor) <= 0) return;
  }
}

}  // namespace

void writeCrashFrames(int file, void *context) {
  const std::string_view maps = readMaps();
  CrashText().text("\ncalls:").writeLine(file);
  writeCalls(file, context, maps);
  CrashText().text("\nmaps:").writeLine(file);
  for (std::string_view rest = maps; !rest.empty();) {
    CrashText().text(rest.substr(0, rest.find('\n'))).writeLine(file);
    rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
  }
}

void warmUpCrashFrames() {
  unw_context_t context;
  unw_cursor_t cursor;
  if (unw_getcontext(&context) != 0 || unw_init_local(&cursor, &context) != 0) return;
  while (unw_step(&cursor) > 0) {
  }
}

}  // namespace velmora
