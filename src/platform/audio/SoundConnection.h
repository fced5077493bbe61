// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The one connection to the sound server, which all who hear or speak share while there is any. Everything of
// it happens on a thread of its own, the sound thread, and nobody waits for that: a server that is frozen,
// dead or slow to come keeps no caller.
//
//   waiting --look, retry timer--> connecting --device list--> connected
//   connecting, connected --refused, died--> waiting (100 ms to 1 s)
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/audio/AudioDevice.h"
#include "platform/audio/CallbackThread.h"

namespace velmora {

class SoundServer;

class SoundConnection {
 public:
  using Clock = std::chrono::steady_clock;
  using Work = std::function<void()>;

  /// Hears of every change of the server and its inputs, on the sound thread.
  class Listener {
   public:
    virtual void soundServerChanged() = 0;

   protected:
    ~Listener() = default;
  };

  struct Inputs {
    std::vector<AudioDevice> devices;
    std::string defaultName;  ///< of the device that the user prefers, else of any; empty: there is none
    bool serverHasDefault = false;  ///< it is what the server gives to who has no wish

    /// Null when there is no such device.
    [[nodiscard]] const AudioDevice *find(const std::string &name) const {
      const auto found = std::find_if(devices.begin(), devices.end(),
                                      [&name](const AudioDevice &device) { return device.name == name; });
      return found == devices.end() ? nullptr : &*found;
    }
    [[nodiscard]] bool has(const std::string &name) const { return find(name) != nullptr; }
  };

  /// The connection of this process; made when nobody has it, opened when something is first asked of it, and
  /// closed when the last one lets it go, which must not be on the sound thread. Any thread.
  static std::shared_ptr<SoundConnection> shared();
  ~SoundConnection();
  SoundConnection(const SoundConnection &) = delete;
  SoundConnection &operator=(const SoundConnection &) = delete;

  /// Absent while there is no server. Without one it tries again, and waits up to a quarter of a second from
  /// the beginning of that attempt for what it brings; otherwise it answers at once. Any thread but the sound
  /// thread.
  [[nodiscard]] std::optional<Inputs> inputs();

  /// Runs `work` on the sound thread, in the order of posting. Any thread.
  void async(Work work);
  /// Tries at once when the next attempt is being waited for. Any thread.
  void retryNow();

  /// For the callbacks of players, which belong on no thread that carries sound. Any thread.
  [[nodiscard]] CallbackThread &playerCallbacks() { return m_playerCallbacks; }

  // Below: on the sound thread only.

  void addListener(Listener &listener);
  void removeListener(Listener &listener);
  /// Runs `work` after `delay`, unless the connection is closed by then.
  void after(Clock::duration delay, Work work);
  /// Asks for the devices again; the listeners hear when the answer is there.
  void refresh();
  /// The current inputs without any waiting; null while not connected.
  [[nodiscard]] const Inputs *currentInputs() const;
  /// Whether the lack of a server is in the log already.
  [[nodiscard]] bool lossIsLogged() const;
  /// What speaks with the sound server.
  [[nodiscard]] SoundServer &server() const;

 private:
  SoundConnection();

  CallbackThread m_playerCallbacks{"player-callback"};  // outlives the sound thread, which posts to it
  mutable std::once_flag m_isOpened;
  mutable std::unique_ptr<SoundServer> m_server;  // null until it is opened
};

}  // namespace velmora
