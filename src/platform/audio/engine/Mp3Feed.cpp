// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/engine/Mp3Feed.h"

#include <mpg123.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "platform/audio/AudioSource.h"

namespace velmora {
namespace {

constexpr std::size_t kPiece = 4096;  // bytes fed at a time
constexpr int kFramesToBelieve = 3;

class Mp3Feed final : public Mp3Decoder::Feed {
 public:
  explicit Mp3Feed(std::shared_ptr<const std::string> bytes) : m_bytes(std::move(bytes)) {
    if (!m_decoder) throw AudioError("MP3 decoding cannot start");
    mpg123_param(m_decoder.get(), MPG123_ADD_FLAGS, MPG123_QUIET, 0);
    mpg123_format_none(m_decoder.get());
    const long *rates = nullptr;
    std::size_t count = 0;
    mpg123_rates(&rates, &count);
    for (std::size_t i = 0; i < count; ++i)
      mpg123_format(m_decoder.get(), rates[i], MPG123_MONO | MPG123_STEREO, MPG123_ENC_SIGNED_16);
    if (mpg123_open_feed(m_decoder.get()) != MPG123_OK) throw AudioError("MP3 decoding cannot start");
    probe();
  }

  [[nodiscard]] int sampleRate() const override { return static_cast<int>(m_rate); }
  [[nodiscard]] int channels() const override { return m_channels; }

  std::size_t decode(std::span<std::int16_t> samples) override {
    std::size_t given = 0;
    while (given < samples.size() && (m_taken < m_ready.size() || decodeFrame())) {
      const std::size_t count = std::min(samples.size() - given, m_ready.size() - m_taken);
      std::copy_n(m_ready.begin() + static_cast<std::ptrdiff_t>(m_taken), count,
                  samples.begin() + static_cast<std::ptrdiff_t>(given));
      m_taken += count;
      given += count;
    }
    if (given == 0 && m_error) throw AudioError(*m_error);
    return given;
  }

 private:
  /// The library alone takes programs and WAV files for music of layers 1 and 2.
  void probe() {
    int frames = 0;
    while (frames < kFramesToBelieve && decodeFrame()) ++frames;
    mpg123_frameinfo info{};
    const bool known = m_rate > 0 && mpg123_info(m_decoder.get(), &info) == MPG123_OK;
    if (m_error || frames == 0 || !known || info.layer != 3) {
      throw AudioError("the data is not MP3" + (m_error ? " (" + *m_error + ")" : std::string()));
    }
  }

  /// Appends the next frame to `m_ready`. False at the end and at what cannot be decoded.
  bool decodeFrame() {
    if (m_taken == m_ready.size()) {
      m_ready.clear();
      m_taken = 0;
    }
    while (!m_error) {
      off_t number = 0;
      unsigned char *audio = nullptr;
      std::size_t bytes = 0;
      const int result = mpg123_decode_frame(m_decoder.get(), &number, &audio, &bytes);
      if (result == MPG123_NEW_FORMAT) {
        takeFormat();
      } else if (result == MPG123_NEED_MORE) {
        if (!feed()) return false;
      } else if (result == MPG123_OK) {
        const auto *const samples = reinterpret_cast<const std::int16_t *>(audio);
        m_ready.insert(m_ready.end(), samples, samples + bytes / sizeof(std::int16_t));
        return true;
      } else if (result == MPG123_DONE) {
        return false;
      } else {
        m_error = mpg123_strerror(m_decoder.get());
      }
    }
    return false;
  }

  void takeFormat() {
    long rate = 0;
    int channels = 0;
    int encoding = 0;
    mpg123_getformat(m_decoder.get(), &rate, &channels, &encoding);
    if (m_rate > 0 && (rate != m_rate || channels != m_channels)) {
      m_error = "the format changes on the way";
      return;
    }
    m_rate = rate;
    m_channels = channels;
  }

  bool feed() {
    const std::size_t size = std::min(kPiece, m_bytes->size() - m_fed);
    if (size == 0) return false;
    const auto *const piece = reinterpret_cast<const unsigned char *>(m_bytes->data()) + m_fed;
    if (mpg123_feed(m_decoder.get(), piece, size) != MPG123_OK) {
      m_error = mpg123_strerror(m_decoder.get());
      return false;
    }
    m_fed += size;
    return true;
  }

  const std::shared_ptr<const std::string> m_bytes;
  const std::unique_ptr<mpg123_handle, decltype([](mpg123_handle *handle) { mpg123_delete(handle); })>
      m_decoder{mpg123_new(nullptr, nullptr)};
  std::size_t m_fed = 0;
  long m_rate = 0;
  int m_channels = 0;
  std::vector<std::int16_t> m_ready;
  std::size_t m_taken = 0;             // of m_ready
  std::optional<std::string> m_error;  // what is at the end of m_ready
};

}  // namespace

std::unique_ptr<Mp3Decoder::Feed> makeMp3Feed(std::shared_ptr<const std::string> bytes) {
  return std::make_unique<Mp3Feed>(std::move(bytes));
}

}  // namespace velmora
