// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/File.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using tests::TemporaryFolder;

TEST(ReadFile, RefusesWhatCouldKeepItWaiting) {
  const TemporaryFolder folder;
  EXPECT_EQ(readFile(folder.write("bytes", std::string_view("a\0b", 3))), std::string("a\0b", 3));
  EXPECT_NE(readFile("/proc/self/status"), "") << "its size is said to be 0";
  ASSERT_EQ(::mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
  fs::resize_file(folder.write("huge", ""), kLargestFile + 1);
  const std::pair<fs::path, const char *> cases[] = {{folder.path(), "is a folder"},
                                                     {folder.path() / "pipe", "is not a regular file"},
                                                     {folder.path() / "huge", "is larger than 16 MiB"}};
  for (const auto &c : cases) {
    EXPECT_THAT([&] { (void)readFile(c.first); },
                ::testing::ThrowsMessage<std::runtime_error>(HasSubstr(c.first.string() + ": " + c.second)));
  }
}

TEST(WriteFile, KeepsLinksAndModes) {
  const TemporaryFolder folder;
  const fs::path file = folder.write("file", "old");
  fs::permissions(file, fs::perms(0640));
  fs::create_symlink("file", folder.path() / "link");
  writeFile(folder.path() / "link", "new");
  EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
  EXPECT_EQ(readFile(file), "new");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
  writeFile(file, "", 0600);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

}  // namespace
}  // namespace velmora
