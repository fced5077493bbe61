// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/AnswerFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

#include "foundation/Descriptor.h"
#include "foundation/File.h"
#include "tools/Interruption.h"
#include "tools/StandardOutput.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path &file, const std::string &why) {
  throw std::runtime_error("the answer cannot be saved: " + file.string() + ": " + why);
}

/// Replacing a device by a file would be a disaster for whoever may.
bool isSpecial(const fs::path &file) {
  std::error_code ignored;
  const fs::file_status status = fs::status(file, ignored);
  return fs::exists(status) && !fs::is_regular_file(status);
}

void check(const fs::path &file) {
  std::error_code ignored;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
  if (!fs::is_directory(folder, ignored)) fail(file, "its folder does not exist");
  if (!file.has_filename() || fs::is_directory(file, ignored)) fail(file, "is a folder");
  if (!isSpecial(file) && ::access(folder.c_str(), W_OK) != 0) fail(file, "its folder may not be written to");
}

/// Waits for the reader of a pipe to take what it is given, but not for one to come.
void writeToSpecial(const fs::path &file, const std::string &answer) {
  const Descriptor device(::open(file.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  if (device.number() < 0) fail(file, errno == ENXIO ? "nobody reads from it" : std::strerror(errno));
  try {
    writeAll(device.number(), answer, Interruption::arrived);
  } catch (const std::system_error &error) {
    fail(file, error.code().message());
  }
}

}  // namespace

fs::path answerFile(const fs::path &file, std::size_t number, std::size_t turns) {
  if (turns < 2) return file;
  fs::path numbered = file;
  numbered.replace_filename(file.stem().string() + "-" + std::to_string(number) + file.extension().string());
  return numbered;
}

void checkAnswerFiles(const fs::path &file, std::size_t turns) {
  for (std::size_t number = 1; number <= turns; ++number) check(answerFile(file, number, turns));
}

void saveAnswer(const fs::path &file, const std::string &answer) {
  check(file);
  if (isSpecial(file)) return writeToSpecial(file, answer);
  try {
    writeFile(file, answer);
  } catch (const std::runtime_error &error) {
    throw std::runtime_error(std::string("the answer cannot be saved: ") + error.what());
  }
}

}  // namespace velmora
