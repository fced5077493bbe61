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

auto failsWith(const char *text) {
  return ::testing::ThrowsMessage<std::runtime_error>(::testing::HasSubstr(text));
}

struct AnswerFile : ::testing::Test {
  tests::TemporaryFolder folder;
  const fs::path file = folder.path() / "answer.mp3";
};

TEST_F(AnswerFile, WhatCannotBeWrittenIsKnownBeforehand) {
  EXPECT_EQ(answerFile("out.d/answer", 12, 12), "out.d/answer-12");
  fs::create_directory(folder.path() / "answer-2.mp3");
  EXPECT_NO_THROW(checkAnswerFiles(file, 1));
  EXPECT_NO_THROW(checkAnswerFiles("answer.mp3", 1));
  EXPECT_THAT([&] { checkAnswerFiles(file, 2); }, failsWith("answer-2.mp3: is a folder"));
  EXPECT_THAT([&] { checkAnswerFiles(folder.path() / "none/answer.mp3", 1); },
              failsWith("its folder does not exist"));
  // A pipe stays one.
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_THAT([&] { saveAnswer(file, "answer"); }, failsWith("nobody reads from it"));
  EXPECT_TRUE(fs::is_fifo(file));
}

TEST_F(AnswerFile, TheOldAnswerIsReplacedAsAWholeOrNotAtAll) {
  (void)folder.write("answer.mp3", "the old answer");
  // The nearest thing to a full disk that needs no mount.
  rlimit usual{};
  ::getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit full{.rlim_cur = 100, .rlim_max = usual.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &full);
  EXPECT_THAT([&] { saveAnswer(file, std::string(1000, 'x')); }, failsWith("File too large"));
  ::setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_EQ(readFile(file), "the old answer");
  const std::string answer("\xff\xf3\0new", 6);
  saveAnswer(file, answer);
  EXPECT_EQ(readFile(file), answer);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()), 1);
}

}  // namespace
}  // namespace velmora
