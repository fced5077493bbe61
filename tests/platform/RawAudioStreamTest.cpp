// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/RawAudioStream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <thread>

#include "foundation/Descriptor.h"
#include "support/AudioFiles.h"

namespace velmora {
namespace {

using tests::readAll;

/// A pipe whose writing end the test feeds.
struct Pipe {
  Pipe() {
    std::array<int, 2> ends{-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    reader = Descriptor(ends[0]);
    writer = Descriptor(ends[1]);
  }
  void write(std::string_view bytes) const {
    ASSERT_EQ(::write(writer.number(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  Descriptor reader;
  Descriptor writer;
};

TEST(RawAudioStream, FramesAreWholeHoweverTheBytesCome) {
  std::string bytes;
  std::vector<std::int16_t> expected;
  for (int i = 0; i < 4000; ++i) {
    expected.push_back(static_cast<std::int16_t>(i * 37 - 32768));
    for (const int shift : {0, 8}) bytes += static_cast<char>(expected.back() >> shift & 0xff);
  }
  bytes += '\x55';  // half a sample
  for (const std::size_t piece : {std::size_t{1}, std::size_t{333}}) {
    Pipe pipe;
    std::thread writer([&] {
      for (std::size_t at = 0; at < bytes.size(); at += piece)
        pipe.write(std::string_view(bytes).substr(at, piece));
      pipe.writer.close();
    });
    RawAudioStream stream(pipe.reader.number(), "standard input");
    std::vector<std::int16_t> samples(1600);
    EXPECT_EQ(stream.read(samples).samples, samples.size());
    const auto rest = readAll(stream);
    samples.insert(samples.end(), rest.begin(), rest.end());
    EXPECT_EQ(samples, expected) << piece;
    writer.join();
  }
}

TEST(RawAudioStream, AFileWithAHeaderIsNoRawAudio) {
  const Pipe pipe;
  pipe.write("RIFF\x24\x10__WAVEfmt ");
  RawAudioStream stream(pipe.reader.number(), "input");
  std::array<std::int16_t, 6> frame{};
  EXPECT_THROW((void)stream.read(frame), AudioError);
}

}  // namespace
}  // namespace velmora
