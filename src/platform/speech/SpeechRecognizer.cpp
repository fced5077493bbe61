// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/speech/SpeechRecognizer.h"

#include <QGuiApplication>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "foundation/Log.h"
#include "platform/Plugin.h"
#include "platform/audio/AudioConverter.h"
#include "platform/audio/AudioSource.h"
#include "platform/speech/PhraseDecoder.h"
#include "platform/speech/ShortUtterance.h"

namespace velmora {
namespace {

constexpr std::uint32_t kTapFrames = 4410;  // 100 ms
constexpr AudioFormat kFormat{.sampleType = SampleType::int16, .sampleRate = 16000};
constexpr std::uint32_t kFrames = 1600;  // 100 ms
constexpr std::size_t kLongestQueue = 30;

PhraseDecoderFactory *loadFactory() {
  std::string problem;
  auto *const factory = Plugin("velmora-speech-engine").root<PhraseDecoderFactory>(problem);
  if (factory != nullptr) problem = factory->problem();
  if (problem.empty()) return factory;
  log("Speech recognition cannot be had: ", problem);
  return nullptr;
}

}  // namespace

/// The thread that decodes, and what is handed to it.
class SpeechRecognizer::Worker {
 public:
  using Hearing = std::function<void(const std::string &command, std::uint64_t session)>;

  /// `hearing` is called on the thread.
  Worker(const PhraseDecoderFactory &factory, Hearing hearing)
      : m_factory(factory), m_hearing(std::move(hearing)), m_thread([this] { run(); }) {}
  ~Worker() {
    {
      const std::lock_guard lock(m_mutex);
      m_ends = true;
    }
    m_changed.notify_one();
    m_thread.join();
  }
  Worker(const Worker &) = delete;
  Worker &operator=(const Worker &) = delete;

  void setPhrases(std::vector<std::string> phrases) {
    const std::lock_guard lock(m_mutex);
    m_phrases = std::move(phrases);
    ++m_phrasesVersion;
  }

  /// What comes from now on has nothing to do with what came before. The number of what comes now.
  std::uint64_t beginSession() {
    const std::lock_guard lock(m_mutex);
    m_queue.clear();
    return ++m_session;
  }
  [[nodiscard]] std::uint64_t session() const {
    const std::lock_guard lock(m_mutex);
    return m_session;
  }

  /// On the audio thread.
  void take(const PCMBuffer &captured) {
    std::vector<std::int16_t> frame;
    try {
      if (!m_converter) m_converter.emplace(AudioEngine::inputFormat(), kFormat);
      PCMBuffer converted(kFormat, kFrames);
      m_converter->convert(converted, [&](AudioConverter::InputStatus &status) {
        status = AudioConverter::InputStatus::haveData;
        return &captured;
      });
      const std::int16_t *const samples = converted.int16ChannelData();
      frame.assign(samples, samples + converted.frameLength());
    } catch (const AudioError &error) {
      return log("Conversion error ", error.what());
    }
    {
      const std::lock_guard lock(m_mutex);
      if (m_queue.size() == kLongestQueue) m_queue.pop_front();
      m_queue.push_back(std::move(frame));
    }
    m_changed.notify_one();
  }

 private:
  void run() {
    ShortUtterance utterance;
    std::unique_ptr<PhraseDecoder> decoder;
    std::uint64_t version = 0;
    std::uint64_t heardSession = 0;
    for (std::unique_lock lock(m_mutex);; lock.lock()) {
      m_changed.wait(lock, [this] { return m_ends || !m_queue.empty(); });
      if (m_ends) return;
      const std::vector<std::int16_t> frame = std::move(m_queue.front());
      m_queue.pop_front();
      const std::uint64_t session = m_session;
      std::optional<std::vector<std::string>> newPhrases;
      if (std::exchange(version, m_phrasesVersion) != m_phrasesVersion) newPhrases = m_phrases;
      lock.unlock();

      if (std::exchange(heardSession, session) != session) utterance.forget();
      if (newPhrases) decoder = make(*newPhrases);
      if (const auto said = utterance.feed(frame); said && decoder) {
        if (const auto command = decoder->decode(*said)) m_hearing(*command, session);
      }
    }
  }

  [[nodiscard]] std::unique_ptr<PhraseDecoder> make(const std::vector<std::string> &phrases) const {
    if (phrases.empty()) return nullptr;
    try {
      return m_factory.make(phrases);
    } catch (const std::runtime_error &error) {
      log("Speech recognition cannot start: ", error.what());
      return nullptr;
    }
  }

  const PhraseDecoderFactory &m_factory;
  const Hearing m_hearing;
  std::optional<AudioConverter> m_converter;  // on the audio thread only
  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::vector<std::int16_t>> m_queue;  // this and what follows guarded by the mutex
  std::vector<std::string> m_phrases;
  std::uint64_t m_phrasesVersion = 0;
  std::uint64_t m_session = 0;
  bool m_ends = false;
  std::thread m_thread;
};

std::unique_ptr<SpeechRecognizer> SpeechRecognizer::make() {
  const PhraseDecoderFactory *const factory = loadFactory();
  return std::unique_ptr<SpeechRecognizer>(factory ? new SpeechRecognizer(*factory) : nullptr);
}

SpeechRecognizer::SpeechRecognizer(const PhraseDecoderFactory &factory)
    : m_worker(std::make_unique<Worker>(factory, [this](const std::string &command, std::uint64_t session) {
        MainQueue::main().async(m_alive, [this, command, session] { heard(command, session); });
      })) {
  m_engine.installTap(kTapFrames,
                      [this](const PCMBuffer &buffer, const AudioTime &) { m_worker->take(buffer); });
}

SpeechRecognizer::~SpeechRecognizer() {
  m_engine.stop();
  m_worker.reset();
}

void SpeechRecognizer::setCommands(std::vector<std::string> phrases) {
  m_worker->setPhrases(std::move(phrases));
}

void SpeechRecognizer::startListening() {
  m_isListening = true;
  follow();
}

void SpeechRecognizer::stopListening() {
  m_isListening = false;
  follow();
}

void SpeechRecognizer::setPaused(bool paused) {
  m_isPaused = paused;
  follow();
}

void SpeechRecognizer::follow() {
  const bool isOn = m_isListening && !m_isPaused;
  if (std::exchange(m_isOn, isOn) == isOn) return;
  if (!isOn) m_engine.stop();
  m_worker->beginSession();
  if (isOn) m_engine.start();
}

void SpeechRecognizer::heard(const std::string &command, std::uint64_t session) {
  if (session != m_worker->session() || !m_isOn) return;
  if (m_inForegroundOnly && QGuiApplication::applicationState() != Qt::ApplicationActive) return;
  if (m_delegate) m_delegate(command);
}

}  // namespace velmora
