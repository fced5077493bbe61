// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

#include "engine/API.h"
#include "platform/process/WakePipe.h"

namespace velmora {

/// Listens to the engine on its threads, keeps what a turn brings, and wakes the thread that runs the turn.
class TurnRecorder : public ConversationTextDelegate, public TurnObserver {
 public:
  using Clock = std::chrono::steady_clock;

  /// What has come so far.
  struct Record {
    std::string request;  ///< the last texts that were not empty
    std::string answer;
    std::string audio;  ///< the whole spoken answer (MP3), once it is complete
    bool followOn = false;
    bool answered = false;  ///< a text or a sound came
    bool utteranceEnded = false;
    std::optional<Clock::time_point> endOfUtterance;
    std::optional<Clock::time_point> firstAudio;
    std::optional<Clock::time_point> ended;
    std::optional<CallResult> result;  ///< present once the turn has ended
  };

  explicit TurnRecorder(const WakePipe &wake) : m_wake(wake) {}

  /// Forgets the last turn.
  void begin();
  [[nodiscard]] Record record() const;
  /// True when the turn's audio is to be ended, or the turn has.
  [[nodiscard]] bool wantsNoMoreAudio() const;
  [[nodiscard]] bool hasEnded() const;

  void updateRequestText(const std::string & /*text*/) override {}
  void updateResponseText(const std::string & /*text*/) override {}
  void stopListening() override;
  void startListening() override {}
  void playResponse(const std::string &mp3) override;

  void responseReceived(const Google_Assistant_Embedded_V1alpha1_ConverseResponse &response) override;
  void turnEnded(const CallResult &result) override;

 private:
  const WakePipe &m_wake;
  mutable std::mutex m_mutex;
  Record m_record;  // guarded by m_mutex
};

}  // namespace velmora
