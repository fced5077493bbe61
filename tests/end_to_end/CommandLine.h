// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "foundation/File.h"
#include "foundation/UserDefaults.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace velmora::tests {

/// The two programs of the command line, as a user whose home is empty has them.
class CommandLine : public ::testing::Test {
 protected:
  struct Outcome {
    int status;
    std::string out;
    std::string err;
  };

  [[nodiscard]] Program::Environment environment(const std::string &token = {},
                                                 const std::string &deployment = {}) const {
    Program::Environment all{{"VELMORA_DEPLOYMENT", deployment}, {"VELMORA_ASSISTANT_TOKEN", token}};
    for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_STATE_HOME"})
      all.emplace_back(name, m_home.path());
    return all;
  }
  static Outcome endOf(Program &program) {
    const int status = program.finish();
    return {status, program.out(), program.err()};
  }
  /// Runs velmora-converse to its end.
  [[nodiscard]] Outcome converse(const std::vector<std::string> &arguments,
                                 const std::string &deployment = {}) const {
    Program program(VELMORA_CONVERSE, arguments, environment({}, deployment));
    return endOf(program);
  }
  /// What an assistant says of itself when it serves.
  static nlohmann::json ready(Program &assistant) {
    EXPECT_TRUE(assistant.waitForOut("\n")) << assistant.err();
    return nlohmann::json::parse(assistant.out());
  }
  [[nodiscard]] UserDefaults defaults() const {
    return UserDefaults(QString::fromStdString((m_home.path() / "velmora" / "defaults.json").string()));
  }

  TemporaryFolder m_home;
  const std::string m_question = VELMORA_QUESTIONS "/01-what-time-is-it.wav";
};

}  // namespace velmora::tests
