// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/AnswerFile.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

TEST(AnswerFile, TheNumberOfTheTurnStandsBeforeTheExtension) {
  EXPECT_EQ(answerFile("out/answer.mp3", 1, 1), "out/answer.mp3");
  EXPECT_EQ(answerFile("out.d/answer", 12, 12), "out.d/answer-12");
  EXPECT_EQ(answerFile("a.b.mp3", 1, 2), "a.b-1.mp3");
}

TEST(AnswerFile, ADeviceStaysADevice) {
  saveAnswer("/dev/null", "answer");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  const tests::TemporaryFolder folder;
  const fs::path pipe = folder.path() / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THAT([&] { saveAnswer(pipe, "answer"); },
              ThrowsMessage<std::runtime_error>(HasSubstr("nobody reads from it")));
}

TEST(AnswerFileDeathTest, TheOldAnswerIsReplacedAsAWholeOrNotAtAll) {
  const tests::TemporaryFolder folder;
  const fs::path file = folder.write("answer.mp3", "the old answer");
  const auto failToSave = [&] {
    // The nearest thing to a full disk that needs no mount.
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{.rlim_cur = 100, .rlim_max = 100};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_THAT([&] { saveAnswer(file, std::string(1000, 'x')); },
                ThrowsMessage<std::runtime_error>(HasSubstr("File too large")));
    std::_Exit(::testing::Test::HasFailure() ? 8 : 7);
  };
  EXPECT_EXIT(failToSave(), ::testing::ExitedWithCode(7), "");
  EXPECT_EQ(readFile(file), "the old answer");
  const std::string answer("\xff\xf3\0new", 6);
  saveAnswer(file, answer);
  EXPECT_EQ(readFile(file), answer);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

TEST(AnswerFile, WhatCannotBeWrittenIsKnownBeforehand) {
  const tests::TemporaryFolder folder;
  fs::create_directory(folder.path() / "answer-2.mp3");
  EXPECT_NO_THROW(checkAnswerFiles(folder.path() / "answer.mp3", 1));
  EXPECT_NO_THROW(checkAnswerFiles("answer.mp3", 1));
  EXPECT_THAT([&] { checkAnswerFiles(folder.path() / "answer.mp3", 2); },
              ThrowsMessage<std::runtime_error>(HasSubstr("answer-2.mp3: is a folder")));
  for (const fs::path &parent : {folder.path() / "none", folder.write("file", "")}) {
    EXPECT_THAT([&] { checkAnswerFiles(parent / "answer.mp3", 1); },
                ThrowsMessage<std::runtime_error>(HasSubstr("its folder does not exist")));
  }
}

}  // namespace
}  // namespace velmora
