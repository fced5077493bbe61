// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/engine/PulseStream.h"

#include <pulse/pulseaudio.h>

#include <utility>

#include "platform/audio/AudioSource.h"

namespace velmora {
namespace {

constexpr auto kLeftToTheServer = static_cast<std::uint32_t>(-1);

[[noreturn]] void refuse(pa_context *context) { throw AudioError(pa_strerror(pa_context_errno(context))); }

std::string deviceOf(pa_stream *stream) {
  const char *const name = pa_stream_get_device_name(stream);
  return name ? name : "";
}

struct Stream final : SoundStream {
  Stream(pa_context *connection, Owner &hears, const char *name, const pa_sample_spec &spec)
      : owner(hears), context(connection) {
    if (!context) throw AudioError("no sound server");
    stream = pa_stream_new(context, name, &spec, nullptr);
    if (!stream) refuse(context);
    pa_stream_set_state_callback(
        stream, [](pa_stream *, void *self) { as(self).changed(); }, this);
  }
  ~Stream() override {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_write_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    if (draining) {
      pa_operation_cancel(draining);
      pa_operation_unref(draining);
    }
    // One that the server has not answered for cannot be closed yet, and would stay open there without us.
    if (pa_stream_get_state(stream) == PA_STREAM_CREATING) {
      pa_stream_set_state_callback(stream, closeOnceMade, nullptr);
      return;
    }
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
  }
  Stream(const Stream &) = delete;
  Stream &operator=(const Stream &) = delete;

  void write(std::span<const std::int16_t> samples) override {
    pa_stream_write(stream, samples.data(), samples.size_bytes(), nullptr, 0, PA_SEEK_RELATIVE);
  }
  void drain() override {
    draining = pa_stream_drain(
        stream, [](pa_stream *, int heard, void *self) { as(self).drained(heard != 0); }, this);
  }

  static void closeOnceMade(pa_stream *stream, void * /*self*/) {
    const pa_stream_state_t state = pa_stream_get_state(stream);
    if (state == PA_STREAM_READY) {
      pa_stream_disconnect(stream);
    } else if (!PA_STREAM_IS_GOOD(state)) {
      pa_stream_set_state_callback(stream, nullptr, nullptr);
      pa_stream_unref(stream);
    }
  }

  // The call of the owner comes last: it may end this object.
  void changed() const {
    const pa_stream_state_t state = pa_stream_get_state(stream);
    if (state == PA_STREAM_READY) {
      owner.streamOpened(deviceOf(stream));
    } else if (!PA_STREAM_IS_GOOD(state)) {
      const std::string reason = pa_strerror(pa_context_errno(context));
      owner.streamFailed(reason);
    }
  }

  void drained(bool heard) {
    pa_operation_unref(std::exchange(draining, nullptr));
    if (heard) owner.streamDrained();  // else the state tells why not
  }

  void read() const {
    while (pa_stream_readable_size(stream) > 0) {
      const void *data = nullptr;  // stays null in a hole
      std::size_t bytes = 0;
      if (pa_stream_peek(stream, &data, &bytes) < 0 || bytes == 0) return;
      owner.streamCaptured(static_cast<const float *>(data), bytes / sizeof(float));
      pa_stream_drop(stream);
    }
  }

  static Stream &as(void *self) { return *static_cast<Stream *>(self); }

  Owner &owner;
  pa_context *const context;
  pa_stream *stream = nullptr;
  pa_operation *draining = nullptr;
};

}  // namespace

std::unique_ptr<SoundStream> openCapture(pa_context *context, SoundStream::Owner &owner,
                                         const SoundStream::Source &source, int sampleRate,
                                         std::uint32_t frames) {
  const pa_sample_spec spec{
      .format = PA_SAMPLE_FLOAT32NE, .rate = static_cast<std::uint32_t>(sampleRate), .channels = 1};
  auto made = std::make_unique<Stream>(context, owner, "Microphone", spec);
  pa_stream *const stream = made->stream;
  pa_stream_set_moved_callback(
      stream, [](pa_stream *moved, void *self) { Stream::as(self).owner.streamMoved(deviceOf(moved)); },
      made.get());
  pa_stream_set_read_callback(
      stream, [](pa_stream *, std::size_t, void *self) { Stream::as(self).read(); }, made.get());
  const pa_buffer_attr sizes{.maxlength = kLeftToTheServer,
                             .tlength = kLeftToTheServer,
                             .prebuf = kLeftToTheServer,
                             .minreq = kLeftToTheServer,
                             .fragsize = frames * static_cast<std::uint32_t>(sizeof(float))};
  const int flags = PA_STREAM_ADJUST_LATENCY | (source.fixed ? PA_STREAM_DONT_MOVE : PA_STREAM_NOFLAGS);
  if (pa_stream_connect_record(stream, source.device.empty() ? nullptr : source.device.c_str(), &sizes,
                               static_cast<pa_stream_flags_t>(flags)) < 0) {
    refuse(made->context);
  }
  return made;
}

std::unique_ptr<SoundStream> openPlayback(pa_context *context, SoundStream::Owner &owner, int sampleRate,
                                          int channels) {
  const pa_sample_spec spec{.format = PA_SAMPLE_S16NE,
                            .rate = static_cast<std::uint32_t>(sampleRate),
                            .channels = static_cast<std::uint8_t>(channels)};
  auto made = std::make_unique<Stream>(context, owner, "Voice", spec);
  pa_stream_set_write_callback(
      made->stream,
      [](pa_stream *, std::size_t bytes, void *self) { Stream::as(self).owner.streamWants(bytes); },
      made.get());
  // The server's own buffer of 2 s costs no delay, since it is filled at once; shorter ones ran dry.
  if (pa_stream_connect_playback(made->stream, nullptr, nullptr, PA_STREAM_NOFLAGS, nullptr, nullptr) < 0) {
    refuse(made->context);
  }
  return made;
}

}  // namespace velmora
