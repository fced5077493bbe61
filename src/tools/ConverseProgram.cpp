// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/ConverseProgram.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "foundation/Log.h"
#include "tools/AnswerFile.h"
#include "tools/Conversation.h"
#include "tools/MicrophoneSource.h"
#include "tools/Options.h"
#include "tools/Report.h"
#include "tools/SignIn.h"
#include "tools/StandardOutput.h"
#include "tools/TurnAudio.h"

namespace velmora {
namespace {

constexpr int kFailed = 1;
constexpr int kWrongArguments = 2;

void complain(const std::string &what) { standardErrorSink()("velmora-converse: " + plainText(what)); }

void run(const std::vector<std::string> &arguments) {
  const Options options = Options::parse(arguments);
  if (options.action == Options::Action::showHelp || options.action == Options::Action::showVersion) {
    const bool help = options.action == Options::Action::showHelp;
    return writeAll(STDOUT_FILENO, help ? Options::help() : Options::version(), [] { return false; });
  }
  if (options.action == Options::Action::listDevices) {
    setLogSink({});
    return writeAll(STDOUT_FILENO, describeMicrophones(), [] { return false; });
  }
  setLogSink(options.verbose ? standardErrorSink() : LogSink());
  const Interruption interruption;
  if (options.action != Options::Action::converse) {
    const bool in = options.action == Options::Action::signIn;
    const std::string said = in ? signIn(options, interruption) : signOut(options, interruption);
    return writeAll(STDOUT_FILENO, said + '\n', Interruption::arrived);
  }
  checkAudio(options.audio);
  const std::size_t turns = options.microphone ? kVoiceTurns : options.audio.size();
  if (options.saveAnswer) checkAnswerFiles(*options.saveAnswer, turns);
  if (options.microphone) {
    converseByVoice(options, interruption);
  } else {
    converse(options, interruption);
  }
}

}  // namespace

int runConverse(const std::vector<std::string> &arguments) {
  // A reader that is gone and a file-size limit are errors of a write, not the end of the program.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    run(arguments);
    return EXIT_SUCCESS;
  } catch (const UsageError &error) {
    complain(std::string(error.what()) + "; see velmora-converse --help");
    return kWrongArguments;
  } catch (const std::exception &error) {
    complain(Interruption::arrived() ? "interrupted" : error.what());
    return kFailed;
  }
}

}  // namespace velmora
