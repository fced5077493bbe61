// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioEngine.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "foundation/Log.h"
#include "foundation/fatal.h"
#include "platform/audio/AudioSource.h"
#include "platform/audio/CallbackThread.h"
#include "platform/audio/InputCapture.h"
#include "platform/audio/Microphone.h"
#include "platform/audio/SoundConnection.h"

namespace velmora {
namespace {

constexpr int kSampleRate = 44100;
constexpr std::uint32_t kBufferSize = 4410;  // before a tap says otherwise
constexpr std::size_t kMostSeconds = 5;      // that the tap may be behind

}  // namespace

/// Brings buffers from the sound thread to the tap's and keeps those of earlier times away from it. Shared
/// with what is on its way.
class AudioEngine::Delivery : public std::enable_shared_from_this<Delivery> {
 public:
  /// Begins a new time, whose buffers are delivered until the next `begin` or `end`. False: one goes on.
  bool begin() {
    const std::lock_guard lock(m_mutex);
    if (m_state != State::stopped) return false;
    m_state = State::waiting;
    ++m_time;
    m_thread.async([self = shared_from_this()] { self->show({}); });
    return true;
  }
  bool end() {
    const std::lock_guard lock(m_mutex);
    if (m_state == State::stopped) return false;
    m_state = State::stopped;
    ++m_time;
    return true;
  }
  /// Returns when no tap is under way that was before; at once within the tap.
  void waitForTap() {
    if (isTap()) return;
    const std::lock_guard delivery(m_delivery);
  }
  [[nodiscard]] bool isTap() const { return m_thread.isCurrent(); }

  [[nodiscard]] State state() const {
    const std::lock_guard lock(m_mutex);
    return m_state;
  }

  void setTap(Tap tap) {
    auto shared = tap ? std::make_shared<const Tap>(std::move(tap)) : nullptr;
    {
      const std::lock_guard lock(m_mutex);
      m_tap.swap(shared);
    }
    waitForTap();
  }
  void attach(Microphone &microphone) {
    const std::lock_guard lock(m_mutex);
    m_microphones.push_back(&microphone);
  }
  void detach(Microphone &microphone) {
    const std::lock_guard lock(m_mutex);
    std::erase(m_microphones, &microphone);
  }

  /// What an `InputCapture` is to do with what it hears in the present time.
  InputCapture::Hearer hearer() {
    const std::lock_guard lock(m_mutex);
    return {
        .block = [self = shared_from_this(), time = m_time, next = std::int64_t{0}](
                     std::vector<float> block) mutable { next = self->post(time, next, std::move(block)); },
        .flow = [self = shared_from_this(),
                 time = m_time](bool flowing) { self->setFlowing(time, flowing); }};
  }

 private:
  /// Gives the time of the next block.
  std::int64_t post(std::uint64_t time, std::int64_t first, std::vector<float> block) {
    const std::lock_guard lock(m_mutex);
    if (time != m_time) return first;
    if (m_pending > kMostSeconds * kSampleRate) {
      if (!std::exchange(m_overrun, true)) log("Audio input error: the tap is too slow, samples are lost");
      return first;
    }
    m_pending += block.size();
    const AudioTime when{.sampleTime = first, .hostTime = SoundConnection::Clock::now()};
    const auto next = first + static_cast<std::int64_t>(block.size());
    m_thread.async([self = shared_from_this(), time, when, samples = std::move(block)] {
      self->deliver(time, when, samples);
    });
    return next;
  }

  void deliver(std::uint64_t time, const AudioTime &when, const std::vector<float> &samples) {
    const std::lock_guard delivery(m_delivery);
    std::shared_ptr<const Tap> tap;
    {
      const std::lock_guard lock(m_mutex);
      m_pending -= samples.size();
      if (m_pending == 0) m_overrun = false;
      if (time != m_time) return;
      tap = m_tap;
    }
    show(samples);
    if (!tap) return;
    if (m_buffer.frameCapacity() != samples.size())
      m_buffer = PCMBuffer(inputFormat(), static_cast<std::uint32_t>(samples.size()));
    std::copy(samples.begin(), samples.end(), m_buffer.floatChannelData());
    m_buffer.setFrameLength(m_buffer.frameCapacity());
    (*tap)(m_buffer, when);
  }

  void show(std::span<const float> samples) {
    const std::lock_guard lock(m_mutex);
    for (Microphone *const microphone : m_microphones) microphone->take(samples);
  }

  void setFlowing(std::uint64_t time, bool flowing) {
    const std::lock_guard lock(m_mutex);
    if (time == m_time) m_state = flowing ? State::running : State::waiting;
  }

  std::mutex m_delivery;  // held during a tap; taken before m_mutex
  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  State m_state = State::stopped;
  std::uint64_t m_time = 0;  // grows with each start and stop
  std::shared_ptr<const Tap> m_tap;
  std::vector<Microphone *> m_microphones;
  std::size_t m_pending = 0;  // frames on their way to the tap
  bool m_overrun = false;
  // On the tap's thread only.
  PCMBuffer m_buffer{inputFormat(), kBufferSize};

  CallbackThread m_thread{"audio-tap"};
};

/// What the engine asks the sound thread for.
class AudioEngine::Input {
 public:
  explicit Input(SoundConnection &connection)
      : m_connection(connection), m_capture(std::make_shared<InputCapture>(connection, kSampleRate)) {}

  void begin(InputCapture::Hearer hearer) {
    const std::lock_guard lock(m_mutex);
    m_connection.retryNow();
    m_connection.async([capture = m_capture, wanted = m_wanted, hearer = std::move(hearer)] {
      capture->begin(wanted, hearer);
    });
  }
  void end() {
    m_connection.async([capture = m_capture] { capture->end(); });
  }
  template <typename Change>
  void change(const Change &apply) {
    const std::lock_guard lock(m_mutex);
    apply(m_wanted);
    m_connection.async([capture = m_capture, wanted = m_wanted] { capture->change(wanted); });
  }
  [[nodiscard]] std::string device() const {
    const std::lock_guard lock(m_mutex);
    return m_wanted.device;
  }

 private:
  SoundConnection &m_connection;
  const std::shared_ptr<InputCapture> m_capture;
  mutable std::mutex m_mutex;
  InputCapture::Wanted m_wanted{.device = {}, .frames = kBufferSize};  // guarded by m_mutex
};

AudioEngine::AudioEngine()
    : m_connection(SoundConnection::shared()),
      m_delivery(std::make_shared<Delivery>()),
      m_input(std::make_unique<Input>(*m_connection)) {}

AudioEngine::~AudioEngine() {
  if (m_delivery->isTap()) fatal("An audio engine was destroyed from within its tap");
  stop();
}

AudioFormat AudioEngine::inputFormat() {
  return {.sampleType = SampleType::float32, .sampleRate = kSampleRate};
}

void AudioEngine::start() {
  const std::lock_guard lock(m_control);
  if (m_delivery->begin()) m_input->begin(m_delivery->hearer());
}

void AudioEngine::stop() {
  {
    const std::lock_guard lock(m_control);
    if (m_delivery->end()) m_input->end();
  }
  m_delivery->waitForTap();
}

AudioEngine::State AudioEngine::state() const { return m_delivery->state(); }

std::optional<std::vector<AudioDevice>> AudioEngine::inputDevices() {
  auto inputs = SoundConnection::shared()->inputs();
  return inputs ? std::optional(std::move(inputs->devices)) : std::nullopt;
}

std::optional<AudioDevice> AudioEngine::inputDevice() const {
  const auto inputs = m_connection->inputs();
  if (!inputs) return std::nullopt;
  const AudioDevice *device = inputs->find(m_input->device());
  if (!device) device = inputs->find(inputs->defaultName);
  return device ? std::optional(*device) : std::nullopt;
}

void AudioEngine::setInputDevice(const AudioDevice &device) {
  const auto inputs = m_connection->inputs();
  if (!inputs) throw AudioError("there is no sound server");
  if (!inputs->has(device.name)) throw AudioError("there is no microphone " + device.name);
  const std::string name = device.name == inputs->defaultName ? "" : device.name;
  m_input->change([&name](InputCapture::Wanted &wanted) { wanted.device = name; });
}

void AudioEngine::installTap(std::uint32_t bufferSize, Tap tap) {
  if (bufferSize == 0) throw AudioError("a tap needs a buffer size");
  m_delivery->setTap(std::move(tap));
  m_input->change([bufferSize](InputCapture::Wanted &wanted) { wanted.frames = bufferSize; });
}

void AudioEngine::removeTap() { m_delivery->setTap({}); }

void AudioEngine::attach(Microphone &microphone) { m_delivery->attach(microphone); }
void AudioEngine::detach(Microphone &microphone) { m_delivery->detach(microphone); }

}  // namespace velmora
