// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "support/SoundServer.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "support/Waiting.h"

namespace velmora::tests {
namespace {

constexpr int kForEver = -1;

void start(QProcess &process, const char *program, const std::vector<std::string> &arguments) {
  QStringList texts;
  for (const std::string &argument : arguments) texts << QString::fromStdString(argument);
  process.start(QString::fromLatin1(program), texts);
  if (!process.waitForStarted(kForEver)) throw std::runtime_error(std::string("there is no ") + program);
}

bool hasWorked(QProcess &process) {
  process.waitForFinished(kForEver);
  return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

}  // namespace

Recording::Recording(std::string monitor) {
  m_reader = std::thread([this, device = "--device=" + std::move(monitor)] { receive(device); });
  std::unique_lock lock(m_mutex);
  m_changed.wait_for(lock, kPatience, [this] { return !m_samples.empty(); });
}

Recording::~Recording() {
  m_isOver = true;
  m_reader.join();
}

void Recording::receive(const std::string &device) {
  constexpr int kLook = 20;  // ms until the end of the recording is noticed
  QProcess recorder;
  start(recorder, "parec",
        {"--raw", "--format=s16le", "--rate=44100", "--channels=1", "--latency-msec=20", device});
  QByteArray bytes;
  while (!m_isOver && recorder.state() != QProcess::NotRunning) {
    recorder.waitForReadyRead(kLook);
    bytes += recorder.readAllStandardOutput();
    const auto *const samples = reinterpret_cast<const std::int16_t *>(bytes.constData());
    const qsizetype count = bytes.size() / 2;
    if (count == 0) continue;
    const std::lock_guard lock(m_mutex);
    m_samples.insert(m_samples.end(), samples, samples + count);
    bytes.remove(0, 2 * count);
    m_changed.notify_all();
  }
  recorder.kill();
  recorder.waitForFinished(kForEver);
}

std::vector<std::int16_t> Recording::samples() const {
  const std::lock_guard lock(m_mutex);
  return m_samples;
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
  ::setenv("PULSE_SERVER", address().c_str(), 1);
  start();
}

SoundServer::~SoundServer() {
  kill();
  ::unsetenv("PULSE_SERVER");
}

bool SoundServer::isHeardBySomebody() const {
  // The others are what the microphones themselves are made of.
  return control({"list", "short", "source-outputs"}).find("protocol-native") != std::string::npos;
}

std::string SoundServer::address() const { return "unix:" + (m_folder.path() / "native").string(); }

void SoundServer::start() {
  const std::string folder = m_folder.path().string();
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.remove(QStringLiteral("PULSE_SERVER"));
  for (const char *name : {"XDG_RUNTIME_DIR", "HOME", "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"})
    environment.insert(QString::fromLatin1(name), QString::fromStdString(folder));
  m_server = std::make_unique<QProcess>();
  m_server->setProcessEnvironment(environment);
  m_server->setProcessChannelMode(QProcess::ForwardedChannels);
  // Without norewinds a sink of its kind runs up to two seconds ahead of what is heard.
  tests::start(*m_server, "pulseaudio",
               {"-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
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
  m_server->kill();
  m_server->waitForFinished(kForEver);
}

void SoundServer::freeze() const { ::kill(static_cast<pid_t>(m_server->processId()), SIGSTOP); }
void SoundServer::thaw() const { ::kill(static_cast<pid_t>(m_server->processId()), SIGCONT); }

std::string SoundServer::control(const std::vector<std::string> &arguments) const {
  QProcess control;
  tests::start(control, "pactl", arguments);
  return hasWorked(control) ? control.readAllStandardOutput().toStdString() : "";
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
  play(samples, microphone + "bus", rate);
}

void SoundServer::play(const std::vector<std::int16_t> &samples, const std::string &sink, int rate) const {
  QProcess player;
  tests::start(player, "pacat",
               {"--playback", "--raw", "--format=s16le", "--rate=" + std::to_string(rate), "--channels=1",
                "--device=" + sink});
  player.write(reinterpret_cast<const char *>(samples.data()), 2 * static_cast<qint64>(samples.size()));
  player.closeWriteChannel();
  if (!hasWorked(player)) throw std::runtime_error("nothing could be said to the sound server");
}

std::unique_ptr<Recording> SoundServer::record() const {
  return std::unique_ptr<Recording>(new Recording("spk.monitor"));
}

}  // namespace velmora::tests
