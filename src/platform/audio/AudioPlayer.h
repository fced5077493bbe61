// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// An answer, or another short sound, from MP3 in memory.
//
//   AudioPlayer player(answer);      // throws when that is no MP3
//   player.play();
//   player.setDelegate(this);        // hears of the end
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace velmora {

class AudioPlayer;
class SoundConnection;

/// Called on a thread that all players share for this, one call at a time. May do to the player whatever it
/// likes, destroying it included.
class AudioPlayerDelegate {
 public:
  /// Everything has been heard; or, not `successfully`, the sound server died, refused, or did not answer for
  /// five seconds, of which there is a line in the log.
  virtual void audioPlayerDidFinishPlaying(AudioPlayer &player, bool successfully) = 0;
  /// The rest cannot be decoded; what was before it has been heard.
  virtual void audioPlayerDecodeErrorDidOccur(AudioPlayer &player, const std::string &error) = 0;

 protected:
  ~AudioPlayerDelegate() = default;
};

/// Plays on the user's default loudspeaker; several players sound together. No method waits for the sound
/// server. All may be called on any thread, from within the delegate as well; destroying it is the last call.
class AudioPlayer {
 public:
  /// Takes the bytes of an MP3 file. Throws `AudioError` at once when they are none.
  explicit AudioPlayer(std::string mp3);
  /// The same of a file. Throws `AudioError` when it cannot be read, too.
  static std::unique_ptr<AudioPlayer> fromFile(const std::filesystem::path &file);
  /// Stops.
  ~AudioPlayer();
  AudioPlayer(const AudioPlayer &) = delete;
  AudioPlayer &operator=(const AudioPlayer &) = delete;

  /// Begins from the start; nothing happens while it plays. A server that is being restarted is waited for.
  void play();
  /// Falls silent; the end is not reported. When it returns, no call of the delegate is under way, but that
  /// from within which it was called. The caller must hold no lock that the delegate takes.
  void stop();
  /// From `play()` to `stop()` or to the report of the end.
  [[nodiscard]] bool isPlaying() const;

  /// Null is none. The earlier one is not called any more when this returns, as with `stop()`. An end that
  /// nobody hears of is not reported later.
  void setDelegate(AudioPlayerDelegate *delegate);

 private:
  class Core;
  const std::shared_ptr<SoundConnection> m_connection;
  const std::shared_ptr<Core> m_core;
};

}  // namespace velmora
