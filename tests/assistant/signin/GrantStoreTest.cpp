// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/GrantStore.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class GrantStoreTest : public ::testing::Test {
 protected:
  GrantStore store() {
    return {m_file, [this] { return std::chrono::system_clock::time_point(std::chrono::seconds(m_now)); },
            [this](std::string_view line) { m_complaints.emplace_back(line); }};
  }
  static TokenAnswer signIn(GrantStore &store) {
    return store
        .exchange(store.newCode({"client", "http://localhost/", "assistant"}), "client", "http://localhost/")
        .value();
  }

  tests::TemporaryFolder m_folder;
  const fs::path m_file = m_folder.path() / "state" / "velmora" / "sign-ins.json";
  std::atomic<std::int64_t> m_now{1'000'000};
  std::vector<std::string> m_complaints;
};

TEST_F(GrantStoreTest, TokensSurviveARestartAndStandNowhereInPlain) {
  TokenAnswer tokens;
  {
    GrantStore first = store();
    EXPECT_FALSE(fs::exists(m_file.parent_path())) << "made before there is anything to keep";
    tokens = signIn(first);
  }
  GrantStore second = store();
  EXPECT_TRUE(second.isLive(tokens.accessToken));
  EXPECT_FALSE(second.isLive(*tokens.refreshToken)) << "a refresh token opens no conversation";
  EXPECT_EQ(second.refresh(*tokens.refreshToken, "client").value().accessToken, tokens.accessToken);
  struct stat status {};
  ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  ASSERT_EQ(::stat(m_file.parent_path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700U);
  const std::string text = readFile(m_file);
  EXPECT_EQ(text.find(tokens.accessToken), std::string::npos);
  EXPECT_EQ(text.find(*tokens.refreshToken), std::string::npos);
  EXPECT_THAT(m_complaints, SizeIs(0));
}

TEST_F(GrantStoreTest, AssistantsOfOneUserShareWhatWasGranted) {
  GrantStore one = store();
  GrantStore other = store();
  const TokenAnswer first = signIn(one);
  const TokenAnswer second = signIn(other);
  EXPECT_TRUE(one.isLive(second.accessToken));
  EXPECT_TRUE(other.isLive(first.accessToken));
  EXPECT_TRUE(other.revoke(*first.refreshToken, "client"));
  EXPECT_FALSE(one.isLive(first.accessToken));
  EXPECT_TRUE(one.isLive(second.accessToken));
}

TEST_F(GrantStoreTest, ADamagedFileIsSetAsideAndNotLost) {
  const char *damages[] = {"", "{", "[]", R"({"version": 2, "grants": []})",
                           R"({"version": 1, "grants": [{"client": "c", "scope": "s", "code": "xyz"}]})"};
  fs::create_directories(m_file.parent_path());
  int number = 0;
  for (const char *damage : damages) {
    (void)m_folder.write("state/velmora/sign-ins.json", damage);
    GrantStore damaged = store();
    EXPECT_FALSE(damaged.isLive("any"));
    const TokenAnswer tokens = signIn(damaged);
    EXPECT_TRUE(damaged.isLive(tokens.accessToken));
    EXPECT_EQ(readFile(m_file.string() + ".damaged-" + std::to_string(++number)), damage);
    ASSERT_THAT(m_complaints, SizeIs(number)) << damage;
    EXPECT_THAT(m_complaints.back(), HasSubstr("sign-ins.json.damaged-" + std::to_string(number)));
  }
}

TEST_F(GrantStoreTest, AFileThatCannotBeReadNowIsNeitherMovedNorReplaced) {
  GrantStore running = store();
  const TokenAnswer tokens = signIn(running);
  const fs::path good = m_folder.path() / "good";
  fs::rename(m_file, good);
  // Nobody can read a pipe that nobody writes, not even root; it could well be replaced.
  ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0);
  GrantStore started = store();
  EXPECT_FALSE(started.isLive(tokens.accessToken));
  EXPECT_THROW((void)started.refresh(*tokens.refreshToken, "client"), std::runtime_error);
  EXPECT_TRUE(started.isLive(signIn(started).accessToken));
  EXPECT_TRUE(running.isLive(tokens.accessToken));
  ASSERT_THAT(m_complaints, SizeIs(2)) << "one of each";
  EXPECT_THAT(m_complaints[0], HasSubstr(m_file.string() + ": is not a regular file"));
  EXPECT_TRUE(fs::is_fifo(m_file));
  EXPECT_EQ(std::distance(fs::directory_iterator(m_file.parent_path()), fs::directory_iterator()), 2)
      << "the file and its lock";

  fs::rename(good, m_file);
  EXPECT_TRUE(started.isLive(tokens.accessToken));
  EXPECT_TRUE(started.refresh(*tokens.refreshToken, "client"));
}

TEST_F(GrantStoreTest, WithoutAPlaceForTheFileItWorksForThisRun) {
  (void)m_folder.write("state", "a file where the folder should be");
  GrantStore lost = store();
  const TokenAnswer tokens = signIn(lost);
  EXPECT_TRUE(lost.isLive(tokens.accessToken));
  ASSERT_THAT(m_complaints, SizeIs(1));
  EXPECT_THAT(m_complaints[0], HasSubstr("hold for this run only"));
}

TEST_F(GrantStoreTest, KeepsTheNewestSignInsOnly) {
  GrantStore full = store();
  std::vector<TokenAnswer> all;
  for (std::size_t i = 0; i < kMostGrants; ++i, ++m_now) all.push_back(signIn(full));
  (void)full.refresh(*all[0].refreshToken, "client");  // in use, and so not the one to go
  const TokenAnswer last = signIn(full);
  EXPECT_TRUE(full.isLive(last.accessToken));
  EXPECT_TRUE(full.isLive(all[0].accessToken));
  EXPECT_FALSE(full.isLive(all[1].accessToken));
}

TEST_F(GrantStoreTest, OfManyWhoComeWithOneCodeOneGetsTokensAndNobodyKeepsThem) {
  GrantStore contended = store();
  const std::string code = contended.newCode({"client", "http://localhost/", "assistant"});
  std::atomic<int> given = 0;
  std::string token;
  std::vector<std::thread> threads;
  threads.reserve(6);
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([&] {
      if (const auto answer = contended.exchange(code, "client", "http://localhost/")) {
        ++given;
        token = answer->accessToken;
      }
    });
  }
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(given, 1);
  EXPECT_FALSE(contended.isLive(token));
}

}  // namespace
}  // namespace velmora
