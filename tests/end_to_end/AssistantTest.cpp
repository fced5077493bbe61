// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-assistant, looked at from outside.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "foundation/Deployment.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using tests::Program;
using Clock = std::chrono::steady_clock;

class AssistantTest : public ::testing::Test {
 protected:
  [[nodiscard]] Program::Environment environment(const std::string &token = "the-token") const {
    return {{"XDG_RUNTIME_DIR", m_runtime.path()},
            {"XDG_STATE_HOME", m_runtime.path()},
            {"VELMORA_ASSISTANT_TOKEN", token}};
  }
  static nlohmann::json ready(Program &program) {
    EXPECT_TRUE(program.waitForOut("\n")) << program.err();
    return nlohmann::json::parse(program.out(), nullptr, false);
  }

  tests::TemporaryFolder m_runtime;
};

TEST_F(AssistantTest, SaysWhereItIsInAPrivateFolderAndLeavesNothingBehind) {
  for (const int number : {SIGTERM, SIGINT, 0}) {
    Program program(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment());
    const auto line = ready(program);
    const fs::path folder = line.at("deployment").get<std::string>();
    struct stat status {};
    ASSERT_EQ(::stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    EXPECT_TRUE(folder.string().starts_with(m_runtime.path().string()));
    EXPECT_FALSE(fs::exists(folder / "server.key"));
    const Deployment deployment = Deployment::load(folder);
    EXPECT_EQ(deployment.address(), line.at("address").get<std::string>());
    EXPECT_EQ(deployment.host, "127.0.0.1");
    EXPECT_THAT(readFile(deployment.resource("roots", "pem")), HasSubstr("BEGIN CERTIFICATE"));
    for (const auto &entry : fs::directory_iterator(folder)) {
      EXPECT_EQ(readFile(entry.path()).find("the-token"), std::string::npos) << entry.path();
    }

    const auto told = Clock::now();
    if (number != 0) program.signal(number);
    EXPECT_EQ(number != 0 ? program.wait() : program.finish(), 0);
    EXPECT_LT(Clock::now() - told, std::chrono::seconds(1));
    EXPECT_FALSE(fs::exists(folder.parent_path()));
    EXPECT_EQ(program.err(), "");
  }
}

TEST_F(AssistantTest, TakesItsTokenFromAFileToo) {
  const auto file = m_runtime.write("token", "from-a-file\n");
  Program program(VELMORA_ASSISTANT, {"--token-file", file}, environment(""));
  EXPECT_TRUE(ready(program).contains("address"));
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait(), 0);
}

TEST_F(AssistantTest, RefusesWhatItCannotDoWithOneLine) {
  Program first(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment());
  const std::string address = ready(first).at("address");
  const std::string port = address.substr(address.find(':') + 1);
  const struct {
    std::vector<std::string> arguments;
    const char *token;
    int status;
    std::string says;
  } cases[] = {{{"--port", port}, "t", 1, "Cannot listen on " + address},
               {{"--port", "65536"}, "t", 2, "--port takes a number"},
               {{"--port=-1"}, "t", 2, "--port takes a number"},
               {{"--port"}, "t", 2, "[Mm]issing value"},
               {{"--frobnicate"}, "t", 2, "frobnicate"},
               {{"extra"}, "t", 2, "unexpected argument 'extra'"},
               {{"--sign-in-port", "x"}, "", 2, "--sign-in-port takes a number"},
               {{"--sign-in-port", port}, "", 1, "Cannot listen on " + address},
               {{"--token-file", "/nowhere/token"}, "", 1, "/nowhere/token"}};
  for (const auto &c : cases) {
    Program program(VELMORA_ASSISTANT, c.arguments, environment(c.token));
    EXPECT_EQ(program.finish(), c.status) << c.says;
    EXPECT_EQ(program.out(), "");
    EXPECT_THAT(program.err(), MatchesRegex("velmora-assistant: [^\n]*" + c.says + "[^\n]*\n"));
  }
}

}  // namespace
}  // namespace velmora
