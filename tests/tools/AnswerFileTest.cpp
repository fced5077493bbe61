// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/AnswerFile.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using tests::TemporaryFolder;

TEST(AnswerFile, TheNumberOfTheTurnStandsBeforeTheExtension) {
  EXPECT_EQ(answerFile("out/answer.mp3", 1, 1), "out/answer.mp3");
  EXPECT_EQ(answerFile("out/answer.mp3", 2, 12), "out/answer-2.mp3");
  EXPECT_EQ(answerFile("out.d/answer", 12, 12), "out.d/answer-12");
  EXPECT_EQ(answerFile("a.b.mp3", 1, 2), "a.b-1.mp3");
}

TEST(AnswerFile, ReplacesWhatWasThere) {
  const TemporaryFolder folder;
  const fs::path file = folder.write("answer.mp3", "an older and longer answer");
  const std::string answer("\xff\xf3\0new", 6);
  saveAnswer(file, answer);
  EXPECT_EQ(readFile(file), answer);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST(AnswerFile, ADeviceIsWrittenToAndStaysADevice) {
  saveAnswer("/dev/null", "answer");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  try {
    saveAnswer("/dev/full", "answer");
    ADD_FAILURE() << "a full device took the answer";
  } catch (const std::runtime_error &error) {
    EXPECT_THAT(error.what(), HasSubstr("/dev/full: No space left on device"));
  }
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST(AnswerFileDeathTest, AFailedWriteLeavesTheOldAnswer) {
  const TemporaryFolder folder;
  const fs::path file = folder.write("answer.mp3", "the old answer");
  EXPECT_EXIT(
      {
        // The nearest thing to a full disk that needs no mount.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        limit.rlim_cur = limit.rlim_max = 100;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        try {
          saveAnswer(file, std::string(100'000, 'x'));
        } catch (const std::runtime_error &error) {
          std::_Exit(std::string_view(error.what()).find("File too large") != std::string_view::npos ? 7 : 8);
        }
      },
      ::testing::ExitedWithCode(7), "");
  EXPECT_EQ(readFile(file), "the old answer");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST(AnswerFile, WhatCannotBeWrittenIsKnownBeforehand) {
  const TemporaryFolder folder;
  fs::create_directory(folder.path() / "answer-2.mp3");
  const struct {
    fs::path file;
    const char *says;
  } cases[] = {{folder.path() / "none/answer.mp3", "its folder does not exist"},
               {folder.write("file", "") / "answer.mp3", "its folder does not exist"},
               {folder.path() / "answer.mp3", "answer-2.mp3: is a folder"}};
  for (const auto &c : cases) {
    try {
      checkAnswerFiles(c.file, 2);
      ADD_FAILURE() << c.file;
    } catch (const std::runtime_error &error) {
      EXPECT_THAT(error.what(), HasSubstr(c.says));
    }
  }
  EXPECT_NO_THROW(checkAnswerFiles(folder.path() / "answer.mp3", 1));
  EXPECT_NO_THROW(checkAnswerFiles("answer.mp3", 1));
}

}  // namespace
}  // namespace velmora
