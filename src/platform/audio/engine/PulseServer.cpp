// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/engine/PulseServer.h"

#include <pthread.h>
#include <pulse/pulseaudio.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "foundation/Descriptor.h"
#include "foundation/Log.h"
#include "foundation/fatal.h"
#include "platform/audio/engine/PulseStream.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using Inputs = SoundConnection::Inputs;
using Listener = SoundConnection::Listener;

constexpr auto kFirstRetry = 100ms;
constexpr auto kLastRetry = 1s;
/// A server that is there answers within some milliseconds; this is what a look costs when it is frozen.
constexpr auto kLook = 250ms;

enum class Link { waiting, connecting, connected };

/// Nothing can be heard through a socket that nothing is plugged into.
bool isPluggedIn(const pa_source_info &source) {
  return source.n_ports == 0 ||
         std::any_of(source.ports, source.ports + source.n_ports,
                     [](const auto *port) { return port->available != PA_PORT_AVAILABLE_NO; });
}

std::string textOf(const char *text) { return text ? text : ""; }

/// libpulse counts references of operations; nobody here waits for one.
void forget(pa_operation *operation) {
  if (operation) pa_operation_unref(operation);
}

class PulseServer final : public SoundServer {
 public:
  PulseServer() : m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_loop(pa_mainloop_new()) {
    if (m_wakeUp.number() < 0 || !m_loop) fatal("The sound thread has no event loop");
    pa_mainloop_api *const api = pa_mainloop_get_api(m_loop);
    api->io_new(
        api, m_wakeUp.number(), PA_IO_EVENT_INPUT,
        [](pa_mainloop_api *, pa_io_event *, int descriptor, pa_io_event_flags_t, void *) {
          eventfd_t count = 0;
          ::eventfd_read(descriptor, &count);
        },
        nullptr);
    m_thread = std::thread([this] { run(); });
  }
  ~PulseServer() override {
    {
      const std::lock_guard lock(m_mutex);
      m_stopping = true;
    }
    ::eventfd_write(m_wakeUp.number(), 1);
    m_thread.join();
    pa_mainloop_free(m_loop);
  }
  PulseServer(const PulseServer &) = delete;
  PulseServer &operator=(const PulseServer &) = delete;

  void async(Work work) override {
    {
      const std::lock_guard lock(m_mutex);
      m_posted.push_back(std::move(work));
    }
    ::eventfd_write(m_wakeUp.number(), 1);
  }

  void retryNow() override {
    const std::lock_guard lock(m_mutex);
    retryLocked();
  }

  std::optional<Inputs> inputs() override {
    std::unique_lock lock(m_mutex);
    retryLocked();
    m_looked.wait_until(lock, m_attempted + kLook, [this] { return m_link != Link::connecting; });
    return m_link == Link::connected ? std::optional(m_inputs) : std::nullopt;
  }

  // On the sound thread.
  void addListener(Listener &listener) override { m_listeners.push_back(&listener); }
  void removeListener(Listener &listener) override { std::erase(m_listeners, &listener); }
  void after(Clock::duration delay, Work work) override {
    m_timers.emplace(Clock::now() + delay, std::move(work));
  }
  void refresh() override {
    if (m_link == Link::connected) query();
  }
  [[nodiscard]] const Inputs *currentInputs() const override {
    return m_link == Link::connected ? &m_inputs : nullptr;
  }
  [[nodiscard]] bool lossIsLogged() const override { return m_lossIsLogged; }
  std::unique_ptr<SoundStream> capture(SoundStream::Owner &owner, const SoundStream::Source &source,
                                       int sampleRate, std::uint32_t frames) override {
    return openCapture(context(), owner, source, sampleRate, frames);
  }
  std::unique_ptr<SoundStream> playback(SoundStream::Owner &owner, int sampleRate, int channels) override {
    return openPlayback(context(), owner, sampleRate, channels);
  }

 private:
  void run() {
    ::pthread_setname_np(::pthread_self(), "sound");
    connect();
    while (runPosted()) {
      runTimers();
      const int timeout =
          static_cast<int>(std::clamp<std::int64_t>(untilNextTimer().count(), 0, 1'000'000'000));
      if (pa_mainloop_prepare(m_loop, timeout) < 0 || pa_mainloop_poll(m_loop) < 0 ||
          pa_mainloop_dispatch(m_loop) < 0) {
        fatal("The sound thread's event loop failed");
      }
    }
    disconnect();
  }

  /// False when the connection is to be closed and nothing is left to do.
  bool runPosted() {
    std::unique_lock lock(m_mutex);
    while (!m_posted.empty()) {
      Work work = std::move(m_posted.front());
      m_posted.pop_front();
      lock.unlock();
      work();
      work = nullptr;
      lock.lock();
    }
    return !m_stopping;
  }

  [[nodiscard]] std::chrono::microseconds untilNextTimer() const {
    Clock::time_point next = Clock::now() + 1h;
    if (!m_timers.empty()) next = std::min(next, m_timers.begin()->first);
    if (m_retryAt) next = std::min(next, *m_retryAt);
    return std::chrono::ceil<std::chrono::microseconds>(next - Clock::now());
  }

  void runTimers() {
    const Clock::time_point now = Clock::now();
    while (!m_timers.empty() && m_timers.begin()->first <= now) m_timers.extract(m_timers.begin()).mapped()();
    if (m_retryAt && *m_retryAt <= now) {
      const std::lock_guard lock(m_mutex);
      m_retryAt.reset();
      retryLocked();
    }
  }

  void retryLocked() {
    if (m_link != Link::waiting) return;
    m_link = Link::connecting;
    m_attempted = Clock::now();
    m_posted.emplace_back([this] { connect(); });
    ::eventfd_write(m_wakeUp.number(), 1);
  }

  void connect() {
    disconnect();
    m_retryAt.reset();
    m_lost = m_querying = m_queryAgain = false;
    pa_proplist *const properties = pa_proplist_new();
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Velmora");
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, "velmora");
    m_context = pa_context_new_with_proplist(pa_mainloop_get_api(m_loop), nullptr, properties);
    pa_proplist_free(properties);
    if (!m_context) fatal("The sound thread is out of memory");
    pa_context_set_state_callback(
        m_context, [](pa_context *, void *self) { as(self).contextChanged(); }, this);
    pa_context_set_subscribe_callback(
        m_context,
        [](pa_context *, pa_subscription_event_type_t, std::uint32_t, void *self) { as(self).query(); },
        this);
    // A server that is not there is not started from here: that would wait for it.
    if (pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) lose();
  }

  void disconnect() {
    if (!m_context) return;
    pa_context_set_state_callback(m_context, nullptr, nullptr);
    pa_context_set_subscribe_callback(m_context, nullptr, nullptr);
    pa_context_disconnect(m_context);
    pa_context_unref(std::exchange(m_context, nullptr));
  }

  void contextChanged() {
    const pa_context_state_t state = pa_context_get_state(m_context);
    if (state == PA_CONTEXT_READY) {
      constexpr int interests = PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER;
      forget(
          pa_context_subscribe(m_context, static_cast<pa_subscription_mask_t>(interests), nullptr, nullptr));
      query();
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
      lose();
    }
  }

  /// Pending operations never call back now. The context itself stays until the next attempt: this may be a
  /// callback of its.
  void lose() {
    if (std::exchange(m_lost, true)) return;
    const std::string reason = pa_strerror(pa_context_errno(m_context));
    {
      const std::lock_guard lock(m_mutex);
      m_link = Link::waiting;
      m_retryAt = Clock::now() + m_retryAfter;
      m_retryAfter = std::min<Clock::duration>(2 * m_retryAfter, kLastRetry);
      m_looked.notify_all();
    }
    if (!std::exchange(m_lossIsLogged, true)) log("Audio error: no sound server: ", reason);
    tellListeners();
  }

  /// One question is under way at a time; changes meanwhile ask once more.
  void query() {
    m_queryAgain = m_querying;
    if (std::exchange(m_querying, true)) return;
    m_found = {};
    forget(pa_context_get_source_info_list(
        m_context,
        [](pa_context *, const pa_source_info *source, int, void *self) { as(self).found(source); }, this));
    forget(pa_context_get_server_info(
        m_context, [](pa_context *, const pa_server_info *info, void *self) { as(self).answered(info); },
        this));
  }

  void found(const pa_source_info *source) {
    if (!source || source->monitor_of_sink != PA_INVALID_INDEX || !isPluggedIn(*source)) return;
    m_found.devices.push_back({textOf(source->name), textOf(source->description)});
  }

  /// The second of the two answers, which come in the order of the questions.
  void answered(const pa_server_info *info) {
    m_querying = false;
    if (m_lost) return;
    m_found.defaultName = info ? textOf(info->default_source_name) : "";
    m_found.serverHasDefault = m_found.has(m_found.defaultName);
    if (!m_found.serverHasDefault) {
      m_found.defaultName = m_found.devices.empty() ? "" : m_found.devices.front().name;
    }
    {
      const std::lock_guard lock(m_mutex);
      m_inputs = std::move(m_found);
      m_link = Link::connected;
      m_looked.notify_all();
    }
    m_retryAfter = kFirstRetry;
    m_lossIsLogged = false;
    if (m_queryAgain) query();
    tellListeners();
  }

  void tellListeners() {
    const std::vector<Listener *> listeners = m_listeners;
    for (Listener *const listener : listeners) {
      const bool stillThere =
          std::find(m_listeners.begin(), m_listeners.end(), listener) != m_listeners.end();
      if (stillThere) listener->soundServerChanged();
    }
  }

  [[nodiscard]] pa_context *context() const { return m_link == Link::connected ? m_context : nullptr; }

  static PulseServer &as(void *self) { return *static_cast<PulseServer *>(self); }

  const Descriptor m_wakeUp;
  pa_mainloop *const m_loop;

  std::mutex m_mutex;
  std::condition_variable m_looked;
  std::deque<Work> m_posted;  // guarded by m_mutex, and so is m_stopping
  bool m_stopping = false;
  // Written under m_mutex: by the sound thread, and on the way from waiting to connecting by any. The sound
  // thread reads without it.
  std::atomic<Link> m_link = Link::connecting;
  Clock::time_point m_attempted = Clock::now();
  Inputs m_inputs;

  // On the sound thread only.
  std::vector<Listener *> m_listeners;
  pa_context *m_context = nullptr;
  std::multimap<Clock::time_point, Work> m_timers;
  std::optional<Clock::time_point> m_retryAt;
  Clock::duration m_retryAfter = kFirstRetry;
  bool m_lost = false;
  bool m_lossIsLogged = false;
  bool m_querying = false;
  bool m_queryAgain = false;
  Inputs m_found;  // by the question under way

  std::thread m_thread;
};

}  // namespace

std::unique_ptr<SoundServer> makePulseServer() { return std::make_unique<PulseServer>(); }

}  // namespace velmora
