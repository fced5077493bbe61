// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Endpoint.h"

namespace velmora {

/// Says in one line what is wrong with a command line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Whether a token can stand in a header. One that cannot would end in an error that nobody understands.
[[nodiscard]] bool fitsHeader(std::string_view token);

/// The command line of velmora-converse.
struct Options {
  enum class Action { converse, listDevices, signIn, signOut, showHelp, showVersion };

  Action action = Action::converse;
  std::optional<std::filesystem::path> deployment;
  bool local = false;
  std::optional<std::string> token;
  std::optional<Endpoint> endpoint;
  std::optional<std::filesystem::path> roots;
  std::int32_t volume = 100;  ///< per cent
  std::optional<std::filesystem::path> saveAnswer;
  bool json = false;
  bool fast = false;
  bool verbose = false;
  std::chrono::milliseconds timeout{30'000};
  bool microphone = false;            ///< instead of audio files
  std::optional<std::string> device;  ///< the microphone's name; absent: the user's default
  std::vector<std::string> audio;     ///< files in the order of the turns; "-" is standard input

  /// Reads the arguments that follow the program's name. Throws `UsageError`; no message repeats a token.
  [[nodiscard]] static Options parse(const std::vector<std::string> &arguments);

  /// What --help and --version print.
  [[nodiscard]] static std::string help();
  [[nodiscard]] static std::string version();
};

}  // namespace velmora
