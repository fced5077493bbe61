// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/AnswerFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "foundation/File.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

TEST(AnswerFile, TheOldAnswerIsReplacedAsAWholeOrNotAtAll) {
  const tests::TemporaryFolder folder;
  const std::filesystem::path file = folder.write("answer.mp3", "the old answer");
  // The nearest thing to a full disk that needs no mount.
  rlimit usual{};
  ::getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit full{.rlim_cur = 100, .rlim_max = usual.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &full);
  EXPECT_THROW(saveAnswer(file, std::string(1000, 'x')), std::runtime_error);
  ::setrlimit(RLIMIT_FSIZE, &usual);
  EXPECT_EQ(readFile(file), "the old answer");
  const std::string answer("\xff\xf3\0new", 6);
  saveAnswer(file, answer);
  EXPECT_EQ(readFile(file), answer);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1) << "left behind";
}

}  // namespace
}  // namespace velmora
