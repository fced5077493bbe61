// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/RunningFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace velmora {
namespace {

constexpr auto kPrefix = "velmora-assistant-";
constexpr auto kLock = "lock";

std::filesystem::path parentFolder() {
  std::error_code error;
  const char *runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime && *runtime == '/' && std::filesystem::is_directory(runtime, error)) {
    std::filesystem::path folder = std::filesystem::path(runtime) / "velmora";
    std::filesystem::create_directory(folder, error);
    if (std::filesystem::is_directory(folder, error)) return folder;
  }
  return std::filesystem::temp_directory_path();
}

/// Takes the lock of the service whose folder it is; none while that runs, or where there is no lock.
Descriptor takeLock(const std::filesystem::path &folder, int flags) {
  Descriptor lock(::open((folder / kLock).c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600));
  if (lock.number() >= 0 && ::flock(lock.number(), LOCK_EX | LOCK_NB) != 0) lock.close();
  return lock;
}

/// Whether it is a folder, no link to one, of this user. Nobody else can put another in its place.
bool isOurs(const std::filesystem::path &folder) {
  struct stat status {};
  return ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid();
}

/// Those of this user's services, running or not: the folder for temporary files is everybody's.
std::vector<std::filesystem::path> folders() {
  std::vector<std::filesystem::path> found;
  std::error_code error;
  for (const auto &entry : std::filesystem::directory_iterator(parentFolder(), error)) {
    if (entry.path().filename().string().starts_with(kPrefix) && isOurs(entry.path()))
      found.push_back(entry.path());
  }
  return found;
}

[[noreturn]] void failToMake(const std::filesystem::path &folder) {
  throw std::runtime_error("cannot make the folder " + folder.string() + ": " +
                           std::generic_category().message(errno));
}

}  // namespace

RunningFolder::RunningFolder() {
  for (const auto &folder : folders()) {
    // One that is being made has no lock yet.
    std::error_code ignored;
    if (const Descriptor abandoned = takeLock(folder, 0); abandoned.number() >= 0)
      std::filesystem::remove_all(folder, ignored);
  }
  std::string path = (parentFolder() / (std::string(kPrefix) + "XXXXXX")).string();
  if (!::mkdtemp(path.data())) failToMake(path);
  m_path = path;
  m_lock = takeLock(m_path, O_CREAT);
}

std::filesystem::path RunningFolder::makePrivate(const char *name) const {
  std::filesystem::path folder = m_path / name;
  if (::mkdir(folder.c_str(), 0700) != 0) failToMake(folder);
  return folder;
}

void RunningFolder::remove() const noexcept {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::vector<std::filesystem::path> RunningFolder::all() {
  std::vector<std::filesystem::path> running;
  for (const auto &folder : folders()) {
    std::error_code error;
    if (!std::filesystem::exists(folder / kLock, error)) continue;
    if (const Descriptor abandoned = takeLock(folder, 0); abandoned.number() < 0) running.push_back(folder);
  }
  return running;
}

}  // namespace velmora
