// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace velmora {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = 65536;
constexpr mode_t kPermissions = 07777;
constexpr mode_t kUsualMode = 0666;  // less what the umask takes

/// "path: reason"; what `std::system_error` makes of its own text would stand the other way round.
[[noreturn]] void fail(const fs::path &path, int error) {
  throw std::system_error(error, std::generic_category(), path.string());
}

class OpenFile {
 public:
  OpenFile(const fs::path &path, int flags, mode_t mode = 0)
      : m_number(::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode)) {}
  ~OpenFile() {
    if (m_number >= 0) ::close(m_number);
  }
  OpenFile(const OpenFile &) = delete;
  OpenFile &operator=(const OpenFile &) = delete;

  [[nodiscard]] int number() const { return m_number; }
  /// A disk on another machine may tell only now that it is full.
  bool close() { return ::close(std::exchange(m_number, -1)) == 0; }

 private:
  int m_number;
};

/// What `path` leads to in the end, whether that exists or not.
fs::path targetOf(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code ignored;
  for (int i = 0; i < kMostLinks && fs::is_symlink(path, ignored); ++i) {
    path = path.parent_path() / fs::read_symlink(path, ignored);
  }
  return path;
}

/// Beside the file, because only there can it take its place in one step; with a name of its own length.
fs::path temporaryFor(const fs::path &path) {
  std::random_device random;
  const std::uint64_t number = std::uint64_t{random()} << 32 | random();
  return path.parent_path() / (".velmora-" + std::to_string(number));
}

/// A disk that fills up in the middle takes a part without an error; the next write then says why.
bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Some file systems cannot do it and say so.
bool synchronise(int descriptor) {
  return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}

}  // namespace

std::string readFile(const fs::path &path) {
  const OpenFile file(path, O_RDONLY | O_NONBLOCK);
  struct stat status {};
  if (file.number() < 0 || ::fstat(file.number(), &status) != 0) fail(path, errno);
  if (S_ISDIR(status.st_mode)) throw std::runtime_error(path.string() + ": is a folder");
  if (!S_ISREG(status.st_mode)) throw std::runtime_error(path.string() + ": is not a regular file");
  std::string contents;
  for (std::size_t size = 0;;) {
    // The size that the system tells is not enough to go by: it is 0 under /proc.
    contents.resize(size + kBlock);
    const ssize_t count = ::read(file.number(), contents.data() + size, kBlock);
    if (count < 0 && errno != EINTR) fail(path, errno);
    if (count > 0) size += static_cast<std::size_t>(count);
    contents.resize(size);
    if (count == 0) return contents;
    if (size > kLargestFile) {
      throw std::runtime_error(path.string() + ": is larger than " + std::to_string(kLargestFile >> 20) +
                               " MiB");
    }
  }
}

void writeFile(const fs::path &path, std::string_view bytes, std::optional<mode_t> mode) {
  const fs::path target = targetOf(path);
  struct stat status {};
  if (!mode && ::stat(target.c_str(), &status) == 0) mode = status.st_mode & kPermissions;
  const fs::path temporary = temporaryFor(target);
  OpenFile file(temporary, O_WRONLY | O_CREAT | O_EXCL, mode.value_or(kUsualMode));
  if (file.number() < 0) fail(path, errno);
  const bool replaced = (!mode || ::fchmod(file.number(), *mode) == 0) && writeAll(file.number(), bytes) &&
                        synchronise(file.number()) && file.close() &&
                        ::rename(temporary.c_str(), target.c_str()) == 0;
  if (replaced) return;
  const int error = errno;
  ::unlink(temporary.c_str());
  fail(path, error);
}

}  // namespace velmora
