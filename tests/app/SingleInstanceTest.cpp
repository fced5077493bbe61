// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>

#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using tests::Program;

/// With a session bus of the test's own, and without any.
class SingleInstances : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (!GetParam()) return;
    m_bus.emplace("dbus-daemon", std::vector<std::string>{"--session", "--nofork", "--print-address"},
                  Program::Environment{});
    ASSERT_TRUE(m_bus->waitForOut("\n"));
    m_address = m_bus->out().substr(0, m_bus->out().find('\n'));
  }
  void TearDown() override { endBus(); }
  void endBus() {
    if (m_bus) m_bus->signal(SIGTERM), m_bus->wait();
    m_bus.reset();
  }

  std::unique_ptr<Program> start(const std::vector<std::string> &arguments = {}) {
    return std::make_unique<Program>(VELMORA_TEST_INSTANCE, arguments,
                                     Program::Environment{{"XDG_RUNTIME_DIR", m_folder.path().string()},
                                                          {"DBUS_SESSION_BUS_ADDRESS", m_address}});
  }
  int send(const char *command) { return start({command})->finish(); }

  tests::TemporaryFolder m_folder;
  std::optional<Program> m_bus;
  std::string m_address = "unix:path=/nowhere";
};

TEST_P(SingleInstances, OneOfManyThatStartTogetherIsTheFirst) {
  for (int round = 0; round < 3; ++round) {
    std::vector<std::unique_ptr<Program>> all;
    all.reserve(12);
    for (int i = 0; i < 12; ++i) all.push_back(start());
    Program *first = nullptr;
    for (auto &one : all) {
      ASSERT_TRUE(one->waitForOut("\n"));
      if (one->out() != "first\n") continue;
      EXPECT_EQ(first, nullptr) << "two of them";
      first = one.get();
    }
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(send("listen"), 0);
    EXPECT_TRUE(first->waitForOut("told listen\n"));
    // The end that gives nothing back must not keep the next one from being first.
    first->signal(SIGKILL);
    first->wait();
  }
  EXPECT_EQ(send("quit"), 1) << "nobody is there";
}

TEST_P(SingleInstances, CommandsComeInOrderAndStrangeOnesAreLogged) {
  const auto first = start();
  ASSERT_TRUE(first->waitForOut("first\n"));
  if (!GetParam()) {
    using std::filesystem::perms;
    const auto mode = [&](const char *name) {
      return std::filesystem::status(m_folder.path() / name).permissions();
    };
    EXPECT_EQ(mode("velmora"), perms::owner_all);
    EXPECT_EQ(mode("velmora/instance.socket") & (perms::group_all | perms::others_all), perms::none);
  }
  for (const char *command : {"", "preferences", "format the disk", "quit"}) EXPECT_EQ(send(command), 0);
  EXPECT_TRUE(first->waitForOut("told quit\n"));
  EXPECT_EQ(
      first->out(),
      "first\ntold \ntold preferences\nCommand error: there is no command format the disk\ntold quit\n");
  // One that hangs keeps nobody waiting for long.
  first->signal(SIGSTOP);
  EXPECT_EQ(send("listen"), 1);
  first->signal(SIGCONT);
  // The end of the bus is not that of the program.
  endBus();
  EXPECT_EQ(first->finish(), 0);
}

INSTANTIATE_TEST_SUITE_P(Ways, SingleInstances, ::testing::Bool(),
                         [](const auto &parameters) { return parameters.param ? "onABus" : "withoutABus"; });

}  // namespace
}  // namespace velmora
