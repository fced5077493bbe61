// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "app/ApplicationOptions.h"

#include <iostream>
#include <string_view>

namespace velmora {
namespace {

constexpr std::string_view kHelp =
    "Usage: velmora [OPTION]...\n"
    "The voice assistant in the status bar. A second start speaks to the running one.\n"
    "\n"
    "  --listen          open the assistant and listen\n"
    "  --preferences     open the preferences\n"
    "  --quit            end the running application\n"
    "  --deployment DIR  talk to the service of this folder, and not to the local assistant\n"
    "  --version         print the version\n"
    "  -h, --help        print this\n"
    "\n"
    "VELMORA_DEPLOYMENT names a deployment as well, and so does the folder velmora/deployment\n"
    "of the user's configuration.\n";

}  // namespace

// QCommandLineParser asks for an application object, which asks for a display.
std::optional<ApplicationOptions> ApplicationOptions::parse(const std::vector<std::string> &arguments) {
  constexpr std::string_view kDeployment = "--deployment";
  ApplicationOptions options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string &argument = arguments[i];
    if (argument == "-h" || argument == "--help") {
      std::cout << kHelp << std::flush;
      return std::nullopt;
    }
    if (argument == "--version") {
      std::cout << "velmora " << VELMORA_VERSION << '\n' << std::flush;
      return std::nullopt;
    }
    if (argument == kDeployment) {
      options.deployment = ++i < arguments.size() ? arguments[i] : "";
    } else if (argument.starts_with(std::string(kDeployment) + '=')) {
      options.deployment = argument.substr(kDeployment.size() + 1);
    } else if (argument == "--listen" || argument == "--preferences" || argument == "--quit") {
      if (!options.command.isEmpty()) throw ApplicationUsageError("one thing at a time: " + argument);
      options.command = QString::fromStdString(argument.substr(2));
    } else {
      throw ApplicationUsageError("unknown argument: " + argument);
    }
  }
  if (options.deployment && options.deployment->empty())
    throw ApplicationUsageError("--deployment needs a folder");
  return options;
}

}  // namespace velmora
