// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Shell scripts stand in for the assistant.
#include "engine/LocalAssistant.h"

#include <gmock/gmock.h>

#include <csignal>
#include <thread>

#include "platform/process/WakePipe.h"
#include "support/CapturedLog.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

namespace velmora {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::CapturedLog;

class LocalAssistantTest : public ::testing::Test {
 protected:
  LocalAssistantTest() {
    (void)m_folder.write("deployment.json", R"({"host": "localhost", "port": 1, "scope": "converse"})");
  }

  [[nodiscard]] std::string path(const char *name) const { return (m_folder.path() / name).string(); }

  /// A script that runs in the test's folder.
  [[nodiscard]] LocalAssistant::Settings assistant(const std::string &script) const {
    const auto file =
        m_folder.write("assistant", "#!/bin/sh\ncd '" + m_folder.path().string() + "'\n" + script + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return {.program = file, .startLimit = 10s, .stopLimit = 5s};
  }

  /// What a good one says, in pieces.
  [[nodiscard]] std::string ready(const std::string &address = "localhost:4711") const {
    return "printf '{\"address\": \"" + address + "\",'; sleep 0.1; echo '\"deployment\": \"" +
           m_folder.path().string() + "\", \"later\": 1}'\n";
  }

  /// Waits until a stand-in has made this file.
  [[nodiscard]] bool makes(const char *name) const {
    return tests::eventually([&] { return std::filesystem::exists(path(name)); });
  }

  /// Whether one with its pid has not been reaped yet.
  [[nodiscard]] bool isThere() const { return ::kill(std::stoi(readFile(path("pid"))), 0) == 0; }

  static std::string failure(const LocalAssistant::Settings &settings) {
    try {
      const LocalAssistant assistant(settings);
      return "no failure";
    } catch (const LocalAssistantError &error) {
      return error.what();
    }
  }

  tests::TemporaryFolder m_folder;
};

const std::string kWithPid = "echo $$ >pid\n";
const std::string kUntilEnd = "exec cat\n";

TEST_F(LocalAssistantTest, GivesADeploymentAndATokenThatOnlyTheChildWasTold) {
  const auto settings =
      assistant(kWithPid + "printf %s \"$VELMORA_ASSISTANT_TOKEN\" >token\n" + ready() + kUntilEnd);
  ::setenv("VELMORA_ASSISTANT_TOKEN", "an inherited one", 1);
  std::string token;
  {
    const LocalAssistant local(settings);
    token = local.token();
    EXPECT_EQ(local.deployment().address(), "localhost:4711");
    EXPECT_EQ(local.deployment().folder, m_folder.path());
    EXPECT_EQ(readFile(path("token")), token);
    EXPECT_THAT(token, ::testing::MatchesRegex("[A-Za-z0-9_-]{43}"));
    EXPECT_TRUE(isThere());
  }
  EXPECT_FALSE(isThere()) << "neither ended nor reaped";
  EXPECT_NE(LocalAssistant(settings).token(), token);
  ::unsetenv("VELMORA_ASSISTANT_TOKEN");
}

TEST_F(LocalAssistantTest, SaysInOneLineWhyItDoesNotServe) {
  const std::string complain = "echo 'first complaint' >&2; printf 'no model found\\n\\n' >&2\n";
  const struct {
    std::string script;
    const char *says;
    std::chrono::milliseconds startLimit = 10s;
  } cases[] = {
      {complain + "exit 3", "ended with exit code 3 before it was ready: no model found$"},
      {complain + "echo hello; " + kUntilEnd, "did not say where it listens but \"hello\": no model found$"},
      {"echo '{\"address\": \"localhost\", \"deployment\": \"/\"}'", "did not say where"},
      {"head -c 100000 /dev/zero | tr '\\0' x; " + kUntilEnd,
       "did not say where it listens but \"x{300}…\"$"},
      {ready("192.0.2.1:443") + kUntilEnd, "listens outside this machine, at 192.0.2.1$"},
      {"echo '{\"address\": \"localhost:1\", \"deployment\": \"/none\"}'",
       "cannot be used: /none is no deployment folder: /none/deployment.json"},
      {"exec sleep 60 >&-", "closed its output before it was ready$"},
      {complain + kUntilEnd, "was not ready within 0.3 s: no model found$", 300ms},
  };
  const CapturedLog log;
  for (const auto &c : cases) {
    auto settings = assistant(c.script);
    settings.startLimit = c.startLimit;
    EXPECT_THAT(failure(settings),
                AllOf(StartsWith("the local assistant "), ContainsRegex(c.says), Not(HasSubstr("\n"))))
        << c.script;
  }
  EXPECT_GT(log.count("velmora-assistant: first complaint"), 0);
  EXPECT_THAT(failure({.program = path("none")}),
              HasSubstr("could not be started: " + path("none") + ": No such file"));
}

TEST_F(LocalAssistantTest, TheStartCanBeGivenUp) {
  const WakePipe cancel;
  auto settings = assistant("echo >begun; " + kUntilEnd);
  settings.startLimit = std::chrono::hours(1);
  settings.cancelDescriptor = cancel.descriptor();
  std::thread user([&] {
    (void)makes("begun");
    cancel.wake();
  });
  EXPECT_EQ(failure(settings), "the local assistant was stopped before it was ready");
  user.join();
}

TEST_F(LocalAssistantTest, OneThatIgnoresTheRequestToEndIsKilled) {
  // The sleeping grandchild keeps the pipes open: the end must not wait for it.
  auto settings = assistant(kWithPid + "trap '' TERM\n" + ready() + "while :; do sleep 5; done");
  settings.stopLimit = 100ms;
  { const LocalAssistant local(settings); }
  EXPECT_FALSE(isThere());
}

TEST_F(LocalAssistantTest, ATalkativeOneIsNeverHeldUp) {
  const CapturedLog log;
  const LocalAssistant local(assistant(
      ready() + "head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2\n" + "echo >done; " + kUntilEnd));
  EXPECT_TRUE(makes("done"));
}

}  // namespace
}  // namespace velmora
