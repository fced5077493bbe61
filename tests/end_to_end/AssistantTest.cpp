// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// velmora-assistant, looked at from outside.
#include <chrono>

#include "end_to_end/CommandLine.h"
#include "foundation/Deployment.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using tests::Program;
using Clock = std::chrono::steady_clock;

struct AssistantTest : tests::CommandLine {};

TEST_F(AssistantTest, SaysWhereItIsInAPrivateFolderAndLeavesNothingBehind) {
  const auto token = m_home.write("token", "the-token\n");
  for (const int number : {SIGTERM, SIGINT, 0}) {
    Program program(VELMORA_ASSISTANT, {"--stop-at-eof", "--token-file", token}, environment());
    const auto line = ready(program);
    const fs::path folder = line.at("deployment").get<std::string>();
    EXPECT_TRUE(folder.string().starts_with(m_home.path().string()));
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(folder / "google_oauth2.json").permissions(), fs::perms(0600));
    EXPECT_FALSE(fs::exists(folder / "server.key"));
    const Deployment deployment = Deployment::load(folder);
    EXPECT_EQ(deployment.address(), line.at("address").get<std::string>());
    EXPECT_EQ(deployment.host, "127.0.0.1");
    for (const auto &entry : fs::directory_iterator(folder))
      EXPECT_THAT(readFile(entry.path()), Not(HasSubstr("the-token"))) << entry.path();
    Program status(VELMORA_ASSISTANT, {"--status"}, environment());
    EXPECT_THAT(endOf(status).out, MatchesRegex("[^\n]*\"turns\":0[^\n]*\n"));

    const auto told = Clock::now();
    if (number != 0) program.signal(number);
    EXPECT_EQ(number != 0 ? program.wait() : program.finish(), 0);
    EXPECT_LT(Clock::now() - told, std::chrono::seconds(1));
    EXPECT_FALSE(fs::exists(folder.parent_path()));
    EXPECT_EQ(program.err(), "");
  }
}

TEST_F(AssistantTest, RefusesWhatItCannotDoWithOneLine) {
  Program first(VELMORA_ASSISTANT, {"--stop-at-eof"}, environment());
  const std::string address = ready(first).at("address");
  const std::string port = address.substr(address.find(':') + 1);
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string says;
  } cases[] = {{{"--port", port}, 1, "Cannot listen on " + address},
               {{"--sign-in-port", port}, 1, "Cannot listen on " + address},
               {{"--token-file", "/nowhere/token"}, 1, "/nowhere/token"},
               {{"--port", "65536"}, 2, "--port takes a number"}};
  for (const auto &c : cases) {
    Program program(VELMORA_ASSISTANT, c.arguments, environment());
    const Outcome outcome = endOf(program);
    EXPECT_EQ(outcome.status, c.status) << c.says;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, MatchesRegex("velmora-assistant: [^\n]*" + c.says + "[^\n]*\n"));
  }
}

}  // namespace
}  // namespace velmora
