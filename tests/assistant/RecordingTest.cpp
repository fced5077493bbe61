// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Recording.h"

#include <gmock/gmock.h>
#include <sndfile.h>
#include <sys/stat.h>

#include "foundation/File.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

TEST(RecordingTest, KeepsEachRequestWholeAndForItsOwnerOnly) {
  const tests::TemporaryFolder folder;
  const std::vector<std::int16_t> said{0, 1, -1, 32767, -32768};
  for (int i = 0; i < 3; ++i) record(folder.path(), said, {.text = "what time is it"});
  int sounds = 0;
  int texts = 0;
  for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
    struct stat status {};
    ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    if (entry.path().extension() == ".txt") {
      ++texts;
      EXPECT_THAT(readFile(entry.path()), testing::StartsWith("what time is it\nconfidence "));
      continue;
    }
    ++sounds;
    SF_INFO info{};
    SNDFILE *const file = sf_open(entry.path().c_str(), SFM_READ, &info);
    ASSERT_TRUE(file) << entry.path();
    std::vector<std::int16_t> held(said.size() + 1);
    held.resize(static_cast<std::size_t>(sf_read_short(file, held.data(), 6)));
    sf_close(file);
    EXPECT_EQ(held, said);
    EXPECT_EQ(info.samplerate, 16000);
    EXPECT_EQ(info.channels, 1);
  }
  EXPECT_EQ(sounds, 3);
  EXPECT_EQ(texts, 3);
}

TEST(RecordingTest, OneThatCannotBeKeptIsComplainedOf) {
  const tests::TemporaryFolder folder;
  testing::internal::CaptureStderr();
  record(folder.path() / "gone", {}, {});
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex(
                  "velmora-assistant: a recording cannot be kept: [^\n]*/gone/[^\n]*: No such[^\n]*\n"));
}

}  // namespace
}  // namespace velmora
