// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// A sound server of the test's own: a microphone to speak into, a loudspeaker to record, and every accident
// that a real one meets. While it exists, PULSE_SERVER names it, so it is made before anything asks for
// sound.
//
//   SoundServer server;
//   const auto recording = server.record();
//   server.say(samples);               // into the microphone
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/TemporaryFolder.h"

namespace velmora::tests {

/// What comes out of the loudspeaker, from the moment that the object exists: mono at 44100 Hz.
class Recording {
 public:
  ~Recording();
  Recording(const Recording &) = delete;
  Recording &operator=(const Recording &) = delete;

  /// Waits until `count` samples from the first one that is no silence have come; those, or fewer when the
  /// patience ran out.
  [[nodiscard]] std::vector<std::int16_t> waitForSound(std::size_t count) const;

 private:
  friend class SoundServer;
  Recording();
  void receive();

  pid_t m_recorder = -1;
  int m_output = -1;
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<std::int16_t> m_samples;
  std::thread m_reader;
};

/// Failures throw `std::runtime_error`. One thread.
class SoundServer {
 public:
  /// Runs when this returns; with a microphone "mic" as the default.
  SoundServer();
  ~SoundServer();
  SoundServer(const SoundServer &) = delete;
  SoundServer &operator=(const SoundServer &) = delete;

  /// The end that leaves no time for farewells. Again with `start()`.
  void kill();
  void start();
  /// Neither dead nor alive, until `thaw()`.
  void freeze() const;
  void thaw() const;

  /// A microphone that hears what is said to it.
  void plugMicrophone(const std::string &name);
  /// A microphone that hears a tone all the time.
  void plugHum(const std::string &name);
  void unplugMicrophone(const std::string &name);
  void setDefaultMicrophone(const std::string &name) const;

  /// Speaks mono samples into the bus of a microphone and returns when they have been said.
  void say(const std::vector<std::int16_t> &samples, const std::string &microphone = "mic",
           int rate = 44100) const;
  [[nodiscard]] std::unique_ptr<Recording> record() const;

  /// Runs `pactl` and gives what it says.
  std::string control(const std::vector<std::string> &arguments) const;
  /// Whether some program has a microphone open.
  [[nodiscard]] bool isHeardBySomebody() const;

 private:
  [[nodiscard]] std::string module(const std::vector<std::string> &arguments) const;

  TemporaryFolder m_folder;
  pid_t m_server = -1;
  std::vector<std::pair<std::string, std::vector<std::string>>> m_modules;  // of each microphone
};

}  // namespace velmora::tests
