// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Hears a spoken command while nothing else goes on.
//
//   auto recognizer = SpeechRecognizer::make();
//   recognizer->setCommands({"okay mac"});
//   recognizer->setDelegate([&](const std::string &command) { openAssistant(); });
//   recognizer->startListening();
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/MainQueue.h"
#include "platform/audio/AudioEngine.h"

namespace velmora {

class PhraseDecoderFactory;

/// Recognises commands that are said by themselves, with a short pause before and after. What the microphone
/// brings goes no further than a thread of this object and is kept for two seconds at most. Main thread only.
class SpeechRecognizer {
 public:
  using Delegate = std::function<void(const std::string &command)>;

  /// Null, after one line in the log, when it cannot be had: the plugin or the speech model is not installed.
  [[nodiscard]] static std::unique_ptr<SpeechRecognizer> make();
  ~SpeechRecognizer();
  SpeechRecognizer(const SpeechRecognizer &) = delete;
  SpeechRecognizer &operator=(const SpeechRecognizer &) = delete;

  /// English words in small letters, separated by one blank. One that nobody knows how to say is one line in
  /// the log, and then nothing is heard.
  void setCommands(std::vector<std::string> phrases);
  /// No recogniser can keep others from listening here: the microphone is everybody's. Only kept.
  void setBlocksOtherRecognizers(bool blocks) { m_blocksOthers = blocks; }
  [[nodiscard]] bool blocksOtherRecognizers() const { return m_blocksOthers; }
  /// Commands are dropped while no window of the program is the active one.
  void setListensInForegroundOnly(bool only) { m_inForegroundOnly = only; }
  /// Called once for each hearing, from the event loop, and not for what was said before the last
  /// `stopListening` or `setPaused`.
  void setDelegate(Delegate delegate) { m_delegate = std::move(delegate); }
  /// To choose the microphone by; its tap is this object's.
  [[nodiscard]] AudioEngine &engine() { return m_engine; }

  void startListening();
  void stopListening();
  /// Lets go of the microphone for a while, and forgets what it brought.
  void setPaused(bool paused);

 private:
  class Worker;

  explicit SpeechRecognizer(const PhraseDecoderFactory &factory);
  void follow();
  void heard(const std::string &command, std::uint64_t session);

  Delegate m_delegate;
  bool m_blocksOthers = false;
  bool m_inForegroundOnly = true;
  bool m_isListening = false;
  bool m_isPaused = false;
  bool m_isOn = false;
  std::unique_ptr<Worker> m_worker;
  AudioEngine m_engine;  // goes before the worker, which its tap uses
  Alive m_alive;
};

}  // namespace velmora
