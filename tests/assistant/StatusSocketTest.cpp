// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/StatusSocket.h"

#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <thread>

#include "assistant/RunningFolder.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;

struct StatusSocketTest : testing::Test {
  [[nodiscard]] bool waitForCaller() const {
    pollfd wait{.fd = socket.descriptor(), .events = POLLIN, .revents = 0};
    return ::poll(&wait, 1, -1) == 1;
  }

  const tests::TemporaryFolder folder;
  const StatusSocket socket{folder.path()};
};

TEST_F(StatusSocketTest, GivesOnePlainLineHoweverMuchIsSaid) {
  const struct {
    std::string said;
    std::optional<std::string> told;
  } cases[] = {{"{\"streams\":0}\n", "{\"streams\":0}"},
               {"\x1b[2J\xc3\xa4\tx\nsecond line\n", "?[2J???x"},
               {std::string(6000, 'x'), std::string(4096, 'x')},
               {"", std::nullopt}};
  for (const auto &c : cases) {
    std::thread service([&] { EXPECT_TRUE(waitForCaller() && socket.answer(c.said)); });
    EXPECT_EQ(StatusSocket::ask(folder.path()), c.told);
    service.join();
  }
}

TEST_F(StatusSocketTest, NobodyWaitsForEverForAServiceThatStandsStill) {
  // More than may wait at the socket: the last ones cannot even connect.
  std::vector<std::thread> callers;
  callers.reserve(12);
  for (int i = 0; i < 12; ++i)
    callers.emplace_back([&] { EXPECT_EQ(StatusSocket::ask(folder.path()), std::nullopt); });
  for (std::thread &caller : callers) caller.join();
  EXPECT_EQ(StatusSocket::ask(folder.path()), std::nullopt) << "those who have gone still stand in the way";
}

TEST(RunningFolderTest, CountsOnlyFoldersOfThisUser) {
  const tests::TemporaryFolder runtime;
  ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1);
  {
    const RunningFolder folder;
    std::filesystem::create_directory_symlink(folder.path(),
                                              folder.path().parent_path() / "velmora-assistant-link");
    if (::geteuid() == 0) {
      const auto other = folder.path().parent_path() / "velmora-assistant-other";
      std::filesystem::create_directory(other);
      std::filesystem::create_hard_link(folder.path() / "lock", other / "lock");
      ASSERT_EQ(::chown(other.c_str(), 12345, 12345), 0);
    }
    EXPECT_THAT(RunningFolder::all(), ElementsAre(folder.path()));
  }
  ::unsetenv("XDG_RUNTIME_DIR");
}

}  // namespace
}  // namespace velmora
