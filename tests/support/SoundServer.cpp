// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/SoundServer.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "support/Waiting.h"

namespace velmora::tests {
namespace {

/// Starts a program with its standard input and output on the descriptors given (-1: nothing there).
pid_t spawn(std::vector<std::string> arguments, int in = -1, int out = -1) {
  std::vector<char *> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string &argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  const std::pair<int, int> standard[] = {{in, STDIN_FILENO}, {out, STDOUT_FILENO}};
  for (const auto &[descriptor, number] : standard) {
    if (descriptor >= 0) {
      ::posix_spawn_file_actions_adddup2(&files, descriptor, number);
    } else {
      ::posix_spawn_file_actions_addopen(&files, number, "/dev/null", O_RDWR, 0);
    }
  }
  pid_t pid = -1;
  const int error = ::posix_spawnp(&pid, pointers.front(), &files, nullptr, pointers.data(), environ);
  ::posix_spawn_file_actions_destroy(&files);
  if (error != 0) throw std::system_error(error, std::generic_category(), arguments.front());
  return pid;
}

int reap(pid_t pid) {
  int status = 0;
  while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

/// The reading and the writing end; children inherit neither but as their own input or output.
std::array<int, 2> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  return ends;
}

}  // namespace

Recording::Recording() {
  const auto [reader, writer] = makePipe();
  m_output = reader;
  m_recorder = spawn({"parec", "--raw", "--format=s16le", "--rate=44100", "--channels=1", "--latency-msec=20",
                      "--device=spk.monitor"},
                     -1, writer);
  ::close(writer);
  m_reader = std::thread([this] { receive(); });
  std::unique_lock lock(m_mutex);
  m_changed.wait_for(lock, kPatience, [this] { return !m_samples.empty(); });
}

Recording::~Recording() {
  ::kill(m_recorder, SIGTERM);
  reap(m_recorder);
  m_reader.join();
  ::close(m_output);
}

void Recording::receive() {
  std::vector<std::int16_t> piece(4096);
  std::size_t odd = 0;  // bytes of half a sample
  for (;;) {
    auto *const bytes = reinterpret_cast<char *>(piece.data());
    const ssize_t count = ::read(m_output, bytes + odd, piece.size() * 2 - odd);
    if (count <= 0) return;
    const std::size_t all = odd + static_cast<std::size_t>(count);
    {
      const std::lock_guard lock(m_mutex);
      m_samples.insert(m_samples.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(all / 2));
      m_changed.notify_all();
    }
    odd = all % 2;
    if (odd) bytes[0] = bytes[all - 1];
  }
}

std::vector<std::int16_t> Recording::waitForSound(std::size_t count) const {
  std::unique_lock lock(m_mutex);
  const auto first = [this] {
    return std::find_if(m_samples.begin(), m_samples.end(), [](std::int16_t sample) { return sample != 0; });
  };
  m_changed.wait_for(lock, kPatience,
                     [&] { return static_cast<std::size_t>(m_samples.end() - first()) >= count; });
  const auto begin = first();
  return {begin,
          begin + std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(count), m_samples.end() - begin)};
}

SoundServer::SoundServer() {
  ::setenv("PULSE_SERVER", ("unix:" + (m_folder.path() / "native").string()).c_str(), 1);
  start();
}

SoundServer::~SoundServer() {
  if (m_server > 0) kill();
  ::unsetenv("PULSE_SERVER");
}

bool SoundServer::isHeardBySomebody() const {
  // The others are what the microphones themselves are made of.
  return control({"list", "short", "source-outputs"}).find("protocol-native") != std::string::npos;
}

void SoundServer::start() {
  const std::string folder = m_folder.path().string();
  // Without norewinds a sink of its kind runs up to two seconds ahead of what is heard.
  m_server = spawn({"env", "-u", "PULSE_SERVER", "XDG_RUNTIME_DIR=" + folder, "HOME=" + folder,
                    "PULSE_RUNTIME_PATH=" + folder + "/pulse", "PULSE_STATE_PATH=" + folder + "/state",
                    "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                    "--log-target=file:" + folder + "/log",
                    "--load=module-native-protocol-unix socket=" + folder + "/native auth-anonymous=1",
                    "--load=module-null-sink sink_name=spk rate=44100 channels=2 norewinds=1"});
  for (const auto deadline = std::chrono::steady_clock::now() + kPatience; control({"info"}).empty();) {
    if (std::chrono::steady_clock::now() > deadline)
      throw std::runtime_error("the sound server does not start");
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  m_modules.clear();
  plugMicrophone("mic");
  setDefaultMicrophone("mic");
}

void SoundServer::kill() {
  ::kill(m_server, SIGKILL);
  reap(std::exchange(m_server, -1));
}

void SoundServer::freeze() const { ::kill(m_server, SIGSTOP); }
void SoundServer::thaw() const { ::kill(m_server, SIGCONT); }

std::string SoundServer::control(const std::vector<std::string> &arguments) const {
  const auto [reader, writer] = makePipe();
  std::vector<std::string> all{"pactl"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const pid_t pid = spawn(all, -1, writer);
  ::close(writer);
  std::string said;
  std::array<char, 4096> piece{};
  for (ssize_t count = 0; (count = ::read(reader, piece.data(), piece.size())) > 0;)
    said.append(piece.data(), static_cast<std::size_t>(count));
  ::close(reader);
  return reap(pid) == 0 ? said : "";
}

std::string SoundServer::module(const std::vector<std::string> &arguments) const {
  std::vector<std::string> all{"load-module"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::string number = control(all);
  if (number.empty()) throw std::runtime_error("the sound server refuses " + arguments.front());
  number.erase(number.find_last_not_of('\n') + 1);
  return number;
}

void SoundServer::plugMicrophone(const std::string &name) {
  const std::string bus = name + "bus";
  std::vector<std::string> modules;
  modules.push_back(
      module({"module-null-sink", "sink_name=" + bus, "rate=44100", "channels=2", "norewinds=1"}));
  modules.push_back(module({"module-remap-source", "master=" + bus + ".monitor", "source_name=" + name}));
  m_modules.emplace_back(name, modules);
  control({"set-default-sink", "spk"});
}

void SoundServer::plugHum(const std::string &name) {
  plugMicrophone(name);
  m_modules.back().second.push_back(module({"module-sine", "sink=" + name + "bus", "frequency=440"}));
}

void SoundServer::unplugMicrophone(const std::string &name) {
  const auto found = std::find_if(m_modules.begin(), m_modules.end(),
                                  [&name](const auto &microphone) { return microphone.first == name; });
  std::for_each(found->second.rbegin(), found->second.rend(), [this](const std::string &number) {
    control({"unload-module", number});
  });
  m_modules.erase(found);
}

void SoundServer::setDefaultMicrophone(const std::string &name) const {
  control({"set-default-source", name});
}

void SoundServer::say(const std::vector<std::int16_t> &samples, const std::string &microphone,
                      int rate) const {
  const auto [reader, writer] = makePipe();
  const pid_t pid = spawn({"pacat", "--playback", "--raw", "--format=s16le", "--rate=" + std::to_string(rate),
                           "--channels=1", "--device=" + microphone + "bus"},
                          reader);
  ::close(reader);
  const auto *bytes = reinterpret_cast<const char *>(samples.data());
  for (std::size_t left = samples.size() * 2; left > 0;) {
    const ssize_t count = ::write(writer, bytes, left);
    if (count < 0) break;
    bytes += count;
    left -= static_cast<std::size_t>(count);
  }
  ::close(writer);
  if (reap(pid) != 0) throw std::runtime_error("nothing could be said to the sound server");
}

std::unique_ptr<Recording> SoundServer::record() const { return std::unique_ptr<Recording>(new Recording); }

}  // namespace velmora::tests
