// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioFile.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Descriptor.h"
#include "platform/audio/Resampler.h"

namespace velmora {
namespace {

constexpr std::size_t kBlock = 4096;  // frames read at a time
// Beyond it a header is damaged rather than unusual.
constexpr int kLowestRate = 1000;
constexpr int kHighestRate = 1'000'000;

[[noreturn]] void refuse(const std::string &path, const std::string &why) {
  throw AudioError(path + ": " + why);
}

/// Opens without waiting: a pipe without a writer must not hold the program up.
int openRegular(const std::string &path) {
  const int number = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (number < 0) refuse(path, std::strerror(errno));
  return number;
}

void checkKind(int descriptor, const std::string &path) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) refuse(path, std::strerror(errno));
  if (S_ISDIR(status.st_mode)) refuse(path, "is a folder");
  if (!S_ISREG(status.st_mode)) refuse(path, "is not a regular file");
  if (status.st_size == 0) refuse(path, "is empty");
}

std::string withoutFullStop(std::string text) {
  while (!text.empty() && (text.back() == '.' || text.back() == ' ')) text.pop_back();
  return text;
}

/// The library calls a header with an impossible rate or no channels an error of its own.
std::string openError() {
  const std::string text = withoutFullStop(sf_strerror(nullptr));
  return text.starts_with("Internal error") ? "its header makes no sense" : text;
}

std::int16_t toSample(float value) {
  return static_cast<std::int16_t>(std::lrint(std::clamp(value * 32768.0F, -32768.0F, 32767.0F)));
}

}  // namespace

class AudioFile::Reader {
 public:
  explicit Reader(const std::filesystem::path &path)
      : m_path(path.string()), m_descriptor(openRegular(m_path)) {
    checkKind(m_descriptor.number(), m_path);
    m_file.reset(sf_open_fd(m_descriptor.number(), SFM_READ, &m_info, SF_FALSE));
    if (!m_file) refuse(m_path, "is not an audio file (" + openError() + ")");
    if (m_info.samplerate < kLowestRate || m_info.samplerate > kHighestRate || m_info.channels < 1) {
      refuse(m_path, "has an impossible sample rate of " + std::to_string(m_info.samplerate) + " Hz");
    }
    if (m_info.frames <= 0) refuse(m_path, "holds no samples");
    if (m_info.frames > static_cast<sf_count_t>(longestSeconds) * m_info.samplerate) refuseLength();
    m_interleaved.resize(kBlock * static_cast<std::size_t>(m_info.channels));
    m_mono.resize(kBlock);
    if (m_info.samplerate != sampleRate) makeResampler();
  }

  AudioRead read(std::span<std::int16_t> frame) {
    while (m_ready.size() - m_taken < frame.size() && !m_ended) convertBlock();
    const std::size_t samples = std::min(frame.size(), m_ready.size() - m_taken);
    std::copy_n(m_ready.begin() + static_cast<std::ptrdiff_t>(m_taken), samples, frame.begin());
    m_taken += samples;
    return {.samples = samples, .ended = m_ended && m_taken == m_ready.size()};
  }

 private:
  [[noreturn]] void refuseLength() const {
    throw AudioTooLong(m_path + ": is longer than " + std::to_string(longestSeconds / 60) + " minutes");
  }

  void makeResampler() {
    try {
      m_resampler.emplace(m_info.samplerate, sampleRate, SampleType::int16, Resampler::Blocks::large);
    } catch (const AudioError &error) {
      refuse(m_path, error.what());
    }
  }

  /// Reads one block and appends what it gives to `m_ready`.
  void convertBlock() {
    m_ready.erase(m_ready.begin(), m_ready.begin() + static_cast<std::ptrdiff_t>(m_taken));
    m_taken = 0;
    const auto frames = static_cast<std::size_t>(
        sf_readf_float(m_file.get(), m_interleaved.data(), static_cast<sf_count_t>(kBlock)));
    if (frames < kBlock && sf_error(m_file.get()) != SF_ERR_NO_ERROR) {
      refuse(m_path, "is damaged (" + withoutFullStop(sf_strerror(m_file.get())) + ")");
    }
    mixDown(frames);
    m_ended = frames < kBlock;
    if (m_resampler) {
      resample(frames);
    } else {
      std::transform(m_mono.begin(), m_mono.begin() + static_cast<std::ptrdiff_t>(frames),
                     std::back_inserter(m_ready), toSample);
      m_produced += frames;
    }
    // A header can claim less than the file holds.
    if (m_produced > longestSeconds * sampleRate + 1) refuseLength();
  }

  void mixDown(std::size_t frames) {
    const auto channels = static_cast<std::size_t>(m_info.channels);
    for (std::size_t i = 0; i < frames; ++i) {
      float sum = 0;
      for (std::size_t c = 0; c < channels; ++c) sum += usableSample(m_interleaved[i * channels + c]);
      m_mono[i] = sum / static_cast<float>(channels);
    }
  }

  void resample(std::size_t frames) {
    const std::span out = std::as_writable_bytes(std::span(m_resampled));
    std::span<const float> rest = std::span(m_mono).first(frames);
    while (!rest.empty()) append(m_resampler->process(rest, out));
    if (!m_ended) return;
    while (const std::size_t made = m_resampler->flush(out)) append(made);
  }

  void append(std::size_t resampled) {
    m_ready.insert(m_ready.end(), m_resampled.begin(),
                   m_resampled.begin() + static_cast<std::ptrdiff_t>(resampled));
    m_produced += resampled;
  }

  std::string m_path;
  Descriptor m_descriptor;
  SF_INFO m_info{};
  std::unique_ptr<SNDFILE, decltype([](SNDFILE *file) { sf_close(file); })> m_file;
  std::optional<Resampler> m_resampler;
  std::vector<float> m_interleaved;
  std::vector<float> m_mono;
  std::vector<std::int16_t> m_resampled = std::vector<std::int16_t>(kBlock);  // as it comes out
  std::vector<std::int16_t> m_ready;
  std::size_t m_taken = 0;     // of m_ready
  std::size_t m_produced = 0;  // in all
  bool m_ended = false;
};

AudioFile::AudioFile(const std::filesystem::path &path) : m_reader(std::make_unique<Reader>(path)) {}

AudioFile::~AudioFile() = default;

AudioRead AudioFile::read(std::span<std::int16_t> frame) { return m_reader->read(frame); }

}  // namespace velmora
