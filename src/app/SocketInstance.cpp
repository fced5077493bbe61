// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/SocketInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QLocalSocket>
#include <cerrno>
#include <chrono>
#include <cstdlib>
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
constexpr auto kPause = 20ms;        // before the next try to reach one that is still starting
constexpr qint64 kLongestLine = 64;  // bytes
constexpr auto kDone = "done\n";

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

QString socketIn(const std::filesystem::path &folder) {
  return QString::fromStdString((folder / "instance.socket").string());
}

int remaining(Clock::time_point end) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
  return static_cast<int>(std::max(left, 0ms).count());
}

/// One try.
bool sendOver(QLocalSocket &socket, const QString &command, Clock::time_point end) {
  if (!socket.waitForConnected(remaining(end))) return false;
  socket.write(command.toUtf8() + '\n');
  while (!socket.canReadLine()) {
    if (!socket.waitForReadyRead(remaining(end))) return false;
  }
  return socket.readLine() == kDone;
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

SocketInstance::SocketInstance(const Handler &handler, Descriptor lock, const QString &socket)
    : SingleInstance(handler), m_lock(std::move(lock)) {
  QLocalServer::removeServer(socket);  // who left it had the lock, and is gone
  m_server.setSocketOptions(QLocalServer::UserAccessOption);
  QObject::connect(&m_server, &QLocalServer::newConnection, [this] { serve(); });
  if (!m_server.listen(socket))
    log("Start error: other processes cannot be heard: ", m_server.errorString().toStdString());
}

void SocketInstance::serve() {
  while (QLocalSocket *const socket = m_server.nextPendingConnection()) {
    QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    const auto read = [this, socket] {
      if (!socket->canReadLine()) {
        if (socket->bytesAvailable() > kLongestLine) socket->abort();
        return;
      }
      const QByteArray line = socket->readLine();
      socket->write(kDone);
      socket->disconnectFromServer();
      obey(QString::fromUtf8(line.chopped(1)));
    };
    QObject::connect(socket, &QLocalSocket::readyRead, socket, read);
    read();
  }
}

bool SocketInstance::send(const QString &command) {
  const auto folder = privateFolder();
  if (!folder) return false;
  for (const auto end = Clock::now() + kPatience; Clock::now() < end;) {
    QLocalSocket socket;
    socket.connectToServer(socketIn(*folder));
    if (sendOver(socket, command, end)) return true;
    std::this_thread::sleep_for(kPause);
  }
  return false;
}

}  // namespace velmora
