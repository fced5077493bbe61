// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Speaking to the user: the answers of a conversation, and the sound that says "go ahead".
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/audio/AudioPlayer.h"

namespace velmora {

/// What a screen does about its answers. Called on the thread of `ResponsePlayback`'s caller and on that of
/// the players; none may wait for one that is calling `ResponsePlayback`. A screen posts to the main queue.
class ResponsePlaybackDelegate {
 public:
  /// The answer begins to be spoken, or is over.
  virtual void speakerIcon(bool isShown) = 0;
  /// The answer has been played to its end: the next turn begins, if the service asked back. After
  /// `speakerIcon`.
  virtual void continueIfFollowUp() = 0;

 protected:
  ~ResponsePlaybackDelegate() = default;
};

/// Plays one answer at a time; a new one takes the place of that before. Any thread.
class ResponsePlayback final : private AudioPlayerDelegate {
 public:
  /// The delegate outlives the object.
  explicit ResponsePlayback(ResponsePlaybackDelegate &delegate);
  /// Falls silent and tells nobody. Whoever calls `playResponse` is gone before.
  ~ResponsePlayback();
  ResponsePlayback(const ResponsePlayback &) = delete;
  ResponsePlayback &operator=(const ResponsePlayback &) = delete;

  /// Takes the bytes of an MP3 file. When they are none, one line in the log says so, and an answer that is
  /// being played goes on.
  void playResponse(const std::string &mp3);
  /// Ends the answer for good: no next turn comes of it.
  void stopSpeaking();
  /// Whether an answer is being played.
  [[nodiscard]] bool isSpeaking() const;

  /// Plays the short sound that says that the microphone is open, from its start; whatever else sounds.
  void playStartPrompt();

 private:
  void audioPlayerDidFinishPlaying(AudioPlayer &player, bool successfully) override;
  void audioPlayerDecodeErrorDidOccur(AudioPlayer &player, const std::string &error) override;
  void finish();

  ResponsePlaybackDelegate &m_delegate;
  std::mutex m_start;  // held while an answer begins or is stopped; taken before m_mutex
  mutable std::mutex m_mutex;
  std::shared_ptr<AudioPlayer> m_player;  // this and below guarded by m_mutex; null: nothing played yet
  bool m_isOver = true;                   // the end of that has been told
  std::shared_ptr<AudioPlayer> m_prompt;
};

}  // namespace velmora
