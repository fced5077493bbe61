// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/RawAudioStream.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "platform/process/WakePipe.h"
#include "support/AudioFiles.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using tests::readAll;

/// A pipe whose writing end the test feeds.
class Pipe {
 public:
  Pipe() {
    if (::pipe2(m_ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
  }
  ~Pipe() {
    ::close(m_ends[0]);
    closeWriter();
  }
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;

  [[nodiscard]] int reader() const { return m_ends[0]; }
  void write(std::string_view bytes) const {
    ASSERT_EQ(::write(m_ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  void closeWriter() {
    if (m_ends[1] >= 0) ::close(m_ends[1]);
    m_ends[1] = -1;
  }

 private:
  std::array<int, 2> m_ends{-1, -1};
};

TEST(RawAudioStream, FramesAreWholeHoweverTheBytesCome) {
  std::string bytes;
  std::vector<std::int16_t> expected;
  for (int i = 0; i < 4000; ++i) {
    const auto sample = static_cast<std::int16_t>(i * 37 - 32768);
    expected.push_back(sample);
    bytes += static_cast<char>(sample & 0xff);
    bytes += static_cast<char>(sample >> 8 & 0xff);
  }
  bytes += '\x55';  // half a sample
  for (const std::size_t piece : {std::size_t{1}, std::size_t{333}, std::size_t{4096}}) {
    Pipe pipe;
    std::thread writer([&] {
      for (std::size_t at = 0; at < bytes.size(); at += piece)
        pipe.write(std::string_view(bytes).substr(at, piece));
      pipe.closeWriter();
    });
    RawAudioStream stream(pipe.reader(), "standard input");
    std::array<std::int16_t, 1600> frame{};
    EXPECT_EQ(stream.read(frame).samples, frame.size());
    EXPECT_TRUE(std::equal(frame.begin(), frame.end(), expected.begin()));
    const auto rest = readAll(stream);
    EXPECT_EQ(rest, std::vector<std::int16_t>(expected.begin() + 1600, expected.end())) << piece;
    EXPECT_TRUE(stream.read(frame).ended);
    writer.join();
  }
}

TEST(RawAudioStream, ABrokenOffReadLosesNothing) {
  const Pipe pipe;
  const WakePipe wake;
  RawAudioStream stream(pipe.reader(), "standard input", wake.descriptor());
  pipe.write(std::string("\x01\x02\x03", 3));
  std::array<std::int16_t, 2> frame{};
  std::thread waker([&] { wake.wake(); });
  const AudioRead broken = stream.read(frame);
  waker.join();
  EXPECT_EQ(broken.samples, 0U);
  EXPECT_FALSE(broken.ended);
  wake.waitUntil(std::nullopt);
  pipe.write(std::string("\x04", 1));
  EXPECT_EQ(stream.read(frame).samples, 2U);
  EXPECT_EQ(frame, (std::array<std::int16_t, 2>{0x0201, 0x0403}));
}

TEST(RawAudioStream, RefusesWhatIsNoRawAudio) {
  const auto refusal = [](RawAudioStream &stream) -> std::string {
    try {
      (void)readAll(stream);
      return "nothing";
    } catch (const AudioError &error) {
      return error.what();
    }
  };
  for (const auto &start : {std::string("RIFF\x24\x10\0\0WAVEfmt ", 16), std::string("fLaC\0\0\0\x22", 8)}) {
    Pipe pipe;
    pipe.write(start);
    pipe.closeWriter();
    RawAudioStream stream(pipe.reader(), "standard input");
    EXPECT_THAT(refusal(stream), HasSubstr("standard input: is an audio file with a header"));
  }
  for (const char *bytes : {"", "x"}) {
    Pipe pipe;
    pipe.write(bytes);
    pipe.closeWriter();
    RawAudioStream empty(pipe.reader(), "standard input");
    EXPECT_EQ(refusal(empty), "standard input: holds no samples");
  }
  const int zeros = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
  RawAudioStream endless(zeros, "zeros");
  EXPECT_THAT(refusal(endless), HasSubstr("zeros: is longer than 10 minutes"));
  ::close(zeros);
  RawAudioStream closed(zeros, "closed");
  EXPECT_THAT(refusal(closed), HasSubstr("closed: Bad file descriptor"));
}

}  // namespace
}  // namespace velmora
