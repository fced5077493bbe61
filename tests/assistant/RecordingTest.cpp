// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/Recording.h"

#include <gmock/gmock.h>

#include <map>

#include "foundation/File.h"
#include "support/AudioFiles.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

TEST(RecordingTest, KeepsEachRequestWholeAndForItsOwnerOnly) {
  const tests::TemporaryFolder folder;
  const std::vector<std::int16_t> said{0, 1, -1, 32767, -32768};
  for (int i = 0; i < 3; ++i) record(folder.path(), said, {.text = "what time is it"});
  std::map<std::string, int> files;
  for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
    EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600));
    ++files[entry.path().extension()];
    if (entry.path().extension() == ".txt") {
      EXPECT_THAT(readFile(entry.path()), testing::StartsWith("what time is it\nconfidence "));
      continue;
    }
    const tests::Sound sound = tests::readAudio(entry.path());
    EXPECT_EQ(sound.samples, said);
    EXPECT_EQ(sound.format.samplerate, 16000);
  }
  EXPECT_THAT(files, testing::ElementsAre(testing::Pair(".txt", 3), testing::Pair(".wav", 3)));
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
