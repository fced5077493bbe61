// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/GrantStore.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::Not;
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

TEST_F(GrantStoreTest, AssistantsOfOneUserShareTokensThatStandNowhereInPlain) {
  GrantStore one = store();
  EXPECT_FALSE(fs::exists(m_file.parent_path())) << "made before there is anything to keep";
  const TokenAnswer tokens = signIn(one);
  GrantStore other = store();
  EXPECT_TRUE(other.isLive(tokens.accessToken));
  EXPECT_FALSE(other.isLive(*tokens.refreshToken)) << "a refresh token opens no conversation";
  EXPECT_EQ(other.refresh(*tokens.refreshToken, "client").value().accessToken, tokens.accessToken);
  EXPECT_EQ(fs::status(m_file).permissions(), fs::perms(0600));
  EXPECT_EQ(fs::status(m_file.parent_path()).permissions(), fs::perms(0700));
  EXPECT_THAT(readFile(m_file), Not(AnyOf(HasSubstr(tokens.accessToken), HasSubstr(*tokens.refreshToken))));
  const TokenAnswer second = signIn(other);
  EXPECT_TRUE(other.revoke(*tokens.refreshToken, "client"));
  EXPECT_FALSE(one.isLive(tokens.accessToken));
  EXPECT_TRUE(one.isLive(second.accessToken));
  EXPECT_THAT(m_complaints, SizeIs(0));
}

TEST_F(GrantStoreTest, ADamagedFileIsSetAsideAndNotLost) {
  const char *damages[] = {"{", R"({"version": 2, "grants": []})",
                           R"({"version": 1, "grants": [{"client": "c", "scope": "s", "code": "xyz"}]})"};
  fs::create_directories(m_file.parent_path());
  int number = 0;
  for (const char *damage : damages) {
    (void)m_folder.write("state/velmora/sign-ins.json", damage);
    GrantStore damaged = store();
    EXPECT_TRUE(damaged.isLive(signIn(damaged).accessToken));
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

  fs::rename(good, m_file);
  EXPECT_TRUE(started.isLive(tokens.accessToken));
  EXPECT_TRUE(started.refresh(*tokens.refreshToken, "client"));
}

TEST_F(GrantStoreTest, OfManyWhoComeWithOneCodeOneGetsTokensAndNobodyKeepsThem) {
  GrantStore contended = store();
  const TokenAnswer own = signIn(contended);
  const std::string code = contended.newCode({"client", "http://localhost/", "assistant"});
  const tests::Inbox<std::string> given;
  std::vector<std::jthread> threads;
  threads.reserve(6);
  for (int i = 0; i < 6; ++i) {
    threads.emplace_back([&] {
      const auto answer = contended.exchange(code, "client", "http://localhost/");
      if (answer) given.put(answer->accessToken);
      EXPECT_EQ(contended.refresh(*own.refreshToken, "client").value().accessToken, own.accessToken);
    });
  }
  threads.clear();
  ASSERT_THAT(given.values(), SizeIs(1));
  EXPECT_FALSE(contended.isLive(given.values().front()));
}

}  // namespace
}  // namespace velmora
