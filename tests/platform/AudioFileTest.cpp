// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/audio/AudioFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/AudioFiles.h"
#include "support/TemporaryFolder.h"
#include "support/ToneFit.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::TemporaryFolder;
using tests::tone;
using tests::writeAudio;

TEST(AudioFile, AToneKeepsFrequencyLevelAndLengthFromEveryKindOfFile) {
  // The source and the result are each rounded by half a step at the most, and on a tone whose period is a
  // few samples these errors may all point the same way: one step is the bound of the residue (the coarser of
  // the two widths), half a step that of the level. What the conversion itself adds is far below.
  const TemporaryFolder folder;
  const auto path = folder.path() / "tone.wav";
  for (const int rate : {8000, 11025, 16000, 44100, 48000}) {
    for (const int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_U8, SF_FORMAT_FLAC | SF_FORMAT_PCM_16}) {
      for (const std::vector<double> &channels : {std::vector{0.5}, std::vector{0.75, 0.25}}) {
        SCOPED_TRACE(::testing::Message() << rate << " Hz, " << format << ", " << channels.size());
        const double step = std::ldexp(1, format == (SF_FORMAT_WAV | SF_FORMAT_PCM_U8) ? 8 : 0);
        const double seconds = 1.05;  // no whole number of frames, nor of blocks
        writeAudio(path, tone(1000, seconds, rate, channels), rate, static_cast<int>(channels.size()),
                   format);
        AudioFile file(path);
        const auto samples = tests::readAll(file, 777);
        // The source's length in samples is rounded, and so is the result.
        EXPECT_NEAR(static_cast<double>(samples.size()), seconds * AudioSource::sampleRate, 1.5);
        // The middle, from a whole period on.
        const auto fit = tests::fitTone<std::int16_t>(std::span(samples).subspan(3200, 9600), 1000, 16000);
        EXPECT_NEAR(fit.amplitude, 16384, step / 2);
        EXPECT_NEAR(fit.phase, 0, 1e-3) << "a delay";
        EXPECT_LT(fit.residue, step);
      }
    }
  }
}

TEST(AudioFile, SaysInOneLineWhatIsWrong) {
  const TemporaryFolder folder;
  const auto pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const auto endless = folder.path() / "long.wav";
  writeAudio(endless, std::vector<float>(600 * 8000 + 1), 8000, 1, SF_FORMAT_WAV | SF_FORMAT_PCM_U8);
  const std::pair<std::filesystem::path, const char *> cases[] = {
      {folder.path() / "none.wav", "No such file"},
      {pipe, "not a regular file"},
      {folder.write("empty.wav", ""), "is empty"},
      {folder.write("cut.wav", "RIFF\x10___WAVE"), "not an audio file"},
      {endless, "longer than 10 minutes"}};
  for (const auto &[path, says] : cases) {
    EXPECT_THAT([&name = path] { const AudioFile file(name); },
                ::testing::ThrowsMessage<AudioError>(
                    AllOf(HasSubstr(path.string() + ": "), HasSubstr(says), Not(HasSubstr("\n")))));
  }
}

}  // namespace
}  // namespace velmora
