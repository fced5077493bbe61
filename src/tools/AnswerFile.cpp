// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/AnswerFile.h"

#include <unistd.h>

#include <QFile>
#include <QSaveFile>
#include <stdexcept>
#include <string_view>

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

/// A disk that fills up in the middle takes a part without an error; the next write then says why.
bool writeWhole(QIODevice &device, std::string_view bytes) {
  while (!bytes.empty()) {
    const qint64 written = device.write(bytes.data(), static_cast<qint64>(bytes.size()));
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
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
  const QString name = QString::fromStdString(file.string());
  if (isSpecial(file)) {
    QFile device(name);
    const auto mode = QIODevice::WriteOnly | QIODevice::ExistingOnly | QIODevice::Unbuffered;
    if (!device.open(mode) || !writeWhole(device, answer)) fail(file, device.errorString().toStdString());
    return;
  }
  QSaveFile save(name);
  const bool written = save.open(QIODevice::WriteOnly) && writeWhole(save, answer) && save.commit();
  if (!written) fail(file, save.errorString().toStdString());
}

}  // namespace velmora
