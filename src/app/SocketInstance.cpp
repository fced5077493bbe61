// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/SocketInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "foundation/Log.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kPatience = 2000ms;
constexpr auto kPause = 20ms;             // before the next try to reach one that is still starting
constexpr std::size_t kLongestLine = 64;  // bytes
constexpr std::string_view kDone = "done\n";

/// The user's own folder for what goes with the session, entered by nobody else.
std::optional<std::filesystem::path> privateFolder() {
  std::error_code error;
  const char *const runtime = std::getenv("XDG_RUNTIME_DIR");
  const bool hasRuntime = runtime && *runtime == '/' && std::filesystem::is_directory(runtime, error);
  const std::filesystem::path folder =
      hasRuntime ? std::filesystem::path(runtime) / "velmora"
                 : std::filesystem::temp_directory_path(error) / ("velmora-" + std::to_string(::geteuid()));
  struct stat status {};
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return std::nullopt;
  // The folder for temporary files is everybody's.
  if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid() ||
      ((status.st_mode & 077) != 0 && ::chmod(folder.c_str(), 0700) != 0)) {
    return std::nullopt;
  }
  return folder;
}

std::filesystem::path socketIn(const std::filesystem::path &folder) { return folder / "instance.socket"; }

/// Absent when the path is too long for one.
std::optional<sockaddr_un> addressOf(const std::filesystem::path &socket) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socket.string().size() >= sizeof address.sun_path) return std::nullopt;
  socket.native().copy(address.sun_path, sizeof address.sun_path - 1);  // and the end that is there
  return address;
}

/// None, with the reason in `errno`, when it cannot be.
Descriptor listenAt(const std::filesystem::path &socket) {
  const auto address = addressOf(socket);
  if (!address) {
    errno = ENAMETOOLONG;
    return {};
  }
  ::unlink(socket.c_str());  // who left it had the lock, and is gone
  Descriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const bool isMade =
      listener.number() >= 0 &&
      ::bind(listener.number(), reinterpret_cast<const sockaddr *>(&*address), sizeof *address) == 0 &&
      ::chmod(socket.c_str(), 0600) == 0 && ::listen(listener.number(), SOMAXCONN) == 0;
  return isMade ? std::move(listener) : Descriptor();
}

/// One try. The server takes the line as soon as it runs.
bool sendOver(const sockaddr_un &address, const std::string &line, Clock::time_point end) {
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto left =
      std::max(std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()), 1000us).count();
  const timeval limit{.tv_sec = left / 1'000'000, .tv_usec = left % 1'000'000};
  for (const int option : {SO_SNDTIMEO, SO_RCVTIMEO})
    ::setsockopt(socket.number(), SOL_SOCKET, option, &limit, sizeof limit);
  if (::connect(socket.number(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
      ::send(socket.number(), line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size()))
    return false;
  std::string answer(kDone.size(), '\0');
  return ::recv(socket.number(), answer.data(), answer.size(), MSG_WAITALL) ==
             static_cast<ssize_t>(kDone.size()) &&
         answer == kDone;
}

}  // namespace

std::unique_ptr<SingleInstance> SocketInstance::claim(const Handler &handler, bool &isTaken) {
  const auto folder = privateFolder();
  if (!folder) return nullptr;
  // The kernel gives it back, however a process ends: no lock is ever stale.
  Descriptor lock(
      ::open((*folder / "instance.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (lock.number() < 0) return nullptr;
  if (::flock(lock.number(), LOCK_EX | LOCK_NB) != 0) {
    isTaken = errno == EWOULDBLOCK;
    return nullptr;
  }
  return std::unique_ptr<SingleInstance>(new SocketInstance(handler, std::move(lock), socketIn(*folder)));
}

SocketInstance::SocketInstance(const Handler &handler, Descriptor lock, const std::filesystem::path &socket)
    : SingleInstance(handler), m_lock(std::move(lock)), m_listener(listenAt(socket)) {
  if (m_listener.number() < 0) {
    log("Start error: other processes cannot be heard: ", std::strerror(errno));
    return;
  }
  m_notifier = std::make_unique<QSocketNotifier>(m_listener.number(), QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { accept(); });
}

void SocketInstance::accept() {
  for (;;) {
    Descriptor asker(::accept4(m_listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (asker.number() < 0) return;
    hear(std::move(asker));
  }
}

void SocketInstance::hear(Descriptor asker) {
  auto *const notifier = new QSocketNotifier(asker.number(), QSocketNotifier::Read, m_notifier.get());
  const auto socket = std::make_shared<const Descriptor>(std::move(asker));
  QObject::connect(notifier, &QSocketNotifier::activated,
                   [this, notifier, socket, line = std::string()]() mutable {
                     char piece[kLongestLine];
                     const ssize_t count = ::recv(socket->number(), piece, sizeof piece, 0);
                     if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
                     if (count > 0) line.append(piece, static_cast<std::size_t>(count));
                     const std::size_t end = line.find('\n');
                     if (count > 0 && end == std::string::npos && line.size() <= kLongestLine) return;
                     // The socket goes with it.
                     notifier->setEnabled(false);
                     notifier->deleteLater();
                     if (end == std::string::npos) return;
                     ::send(socket->number(), kDone.data(), kDone.size(), MSG_NOSIGNAL);
                     obey(QString::fromUtf8(line.data(), static_cast<qsizetype>(end)));
                   });
}

bool SocketInstance::send(const QString &command) {
  const auto folder = privateFolder();
  const auto address = folder ? addressOf(socketIn(*folder)) : std::nullopt;
  if (!address) return false;
  for (const auto end = Clock::now() + kPatience; Clock::now() < end;) {
    if (sendOver(*address, command.toStdString() + '\n', end)) return true;
    std::this_thread::sleep_for(kPause);
  }
  return false;
}

}  // namespace velmora
