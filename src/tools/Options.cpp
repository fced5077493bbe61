// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace velmora {
namespace {

// Above every character, so that none is taken for a short option.
enum Option : int {
  kDeployment = 256,
  kLocal,
  kToken,
  kEndpoint,
  kRoots,
  kVolume,
  kSaveAnswer,
  kJson,
  kFast,
  kTimeout,
  kVerbose,
  kMicrophone,
  kDevice,
  kListDevices,
  kSignIn,
  kSignOut,
  kHelp,
  kVersion
};

constexpr std::array kOptions{option{"deployment", required_argument, nullptr, kDeployment},
                              option{"local", no_argument, nullptr, kLocal},
                              option{"token", required_argument, nullptr, kToken},
                              option{"endpoint", required_argument, nullptr, kEndpoint},
                              option{"roots", required_argument, nullptr, kRoots},
                              option{"volume", required_argument, nullptr, kVolume},
                              option{"save-answer", required_argument, nullptr, kSaveAnswer},
                              option{"json", no_argument, nullptr, kJson},
                              option{"fast", no_argument, nullptr, kFast},
                              option{"timeout", required_argument, nullptr, kTimeout},
                              option{"verbose", no_argument, nullptr, kVerbose},
                              option{"microphone", no_argument, nullptr, kMicrophone},
                              option{"device", required_argument, nullptr, kDevice},
                              option{"list-devices", no_argument, nullptr, kListDevices},
                              option{"sign-in", no_argument, nullptr, kSignIn},
                              option{"sign-out", no_argument, nullptr, kSignOut},
                              option{"help", no_argument, nullptr, kHelp},
                              option{"version", no_argument, nullptr, kVersion},
                              option{nullptr, 0, nullptr, 0}};

constexpr int kLongestTimeout = 24 * 60 * 60;  // seconds

std::string nameOf(int value) {
  const auto *found = std::find_if(kOptions.begin(), kOptions.end() - 1,
                                   [&](const option &candidate) { return candidate.val == value; });
  return found == kOptions.end() - 1 ? std::string{'-', static_cast<char>(value)}
                                     : "--" + std::string(found->name);
}

/// " --json --…": those that an abbreviation may stand for.
std::string optionsThatBegin(std::string_view abbreviation) {
  std::string names;
  for (const option &candidate : kOptions) {
    const std::string name = candidate.name ? "--" + std::string(candidate.name) : "";
    if (abbreviation.size() > 2 && name.starts_with(abbreviation)) names += " " + name;
  }
  return names;
}

template <typename Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number{};
  const char *const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

std::int32_t volumeOf(const std::string &text) {
  const auto volume = numberIn<std::int32_t>(text);
  if (!volume || *volume < 0 || *volume > 100) {
    throw UsageError("--volume takes a number from 0 to 100, not '" + text + "'");
  }
  return *volume;
}

std::chrono::milliseconds timeoutOf(const std::string &text) {
  const auto seconds = numberIn<double>(text);
  if (!seconds || !(*seconds > 0) || *seconds > kLongestTimeout) {
    throw UsageError("--timeout takes a number of seconds above 0 and up to " +
                     std::to_string(kLongestTimeout) + ", not '" + text + "'");
  }
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(*seconds));
}

Endpoint endpointOf(const std::string &text) {
  if (auto endpoint = Endpoint::parse(text)) return *std::move(endpoint);
  throw UsageError("--endpoint takes HOST, HOST:PORT or [IPv6]:PORT, not '" + text + "'");
}

std::string tokenOf(const std::string &text) {
  if (!fitsHeader(text)) {
    throw UsageError("--token takes printable ASCII characters without blanks");
  }
  return text;
}

bool takesValue(int value) {
  return std::any_of(kOptions.begin(), kOptions.end(), [&](const option &candidate) {
    return candidate.val == value && candidate.has_arg == required_argument;
  });
}

std::string nameOf(Options::Action action) {
  switch (action) {
    case Options::Action::listDevices: return nameOf(kListDevices);
    case Options::Action::signIn: return nameOf(kSignIn);
    default: return nameOf(kSignOut);
  }
}

void setAction(Options &options, Options::Action action) {
  if (options.action != Options::Action::converse && options.action != action) {
    throw UsageError(nameOf(options.action) + " and " + nameOf(action) + " exclude each other");
  }
  options.action = action;
}

void set(Options &options, int value, const std::string &argument) {
  if (argument.empty() && takesValue(value)) {
    throw UsageError(nameOf(value) + " needs a value that is not empty");
  }
  switch (value) {
    case kDeployment: options.deployment = argument; break;
    case kLocal: options.local = true; break;
    case kToken: options.token = tokenOf(argument); break;
    case kEndpoint: options.endpoint = endpointOf(argument); break;
    case kRoots: options.roots = argument; break;
    case kVolume: options.volume = volumeOf(argument); break;
    case kSaveAnswer: options.saveAnswer = argument; break;
    case kJson: options.json = true; break;
    case kFast: options.fast = true; break;
    case kTimeout: options.timeout = timeoutOf(argument); break;
    case kMicrophone: options.microphone = true; break;
    case kDevice: options.device = argument; break;
    case kListDevices: setAction(options, Options::Action::listDevices); break;
    case kSignIn: setAction(options, Options::Action::signIn); break;
    case kSignOut: setAction(options, Options::Action::signOut); break;
    default: options.verbose = true; break;
  }
}

void checkTogether(const Options &options) {
  if (options.local && options.deployment) throw UsageError("--local and --deployment exclude each other");
  if (options.local && options.endpoint) throw UsageError("--local and --endpoint exclude each other");
  if (options.local && options.roots) throw UsageError("--local and --roots exclude each other");
  if (options.action != Options::Action::converse) {
    const std::string name = nameOf(options.action);
    if (!options.audio.empty()) throw UsageError(name + " takes no audio");
    if (options.microphone) throw UsageError(name + " and --microphone exclude each other");
    if (options.token) throw UsageError(name + " and --token exclude each other");
    if (options.endpoint) throw UsageError(name + " and --endpoint exclude each other");
    return;
  }
  if (options.device && !options.microphone) throw UsageError("--device needs --microphone");
  if (options.microphone) {
    if (options.fast) throw UsageError("--fast and --microphone exclude each other");
    if (!options.audio.empty()) throw UsageError("--microphone takes no audio");
    return;
  }
  if (options.audio.empty()) throw UsageError("no audio file is given");
  if (std::count(options.audio.begin(), options.audio.end(), "-") > 1) {
    throw UsageError("standard input (-) can be read only once");
  }
  if (std::find(options.audio.begin(), options.audio.end(), "") != options.audio.end()) {
    throw UsageError("the name of an audio file is empty");
  }
}

}  // namespace

bool fitsHeader(std::string_view token) {
  return std::all_of(token.begin(), token.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

Options Options::parse(const std::vector<std::string> &arguments) {
  std::vector<std::string> texts{"velmora-converse"};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char *> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string &text : texts) pointers.push_back(text.data());
  const int count = static_cast<int>(pointers.size());
  pointers.push_back(nullptr);

  Options options;
  ::optind = 0;  // begins anew, whatever was parsed before
  ::opterr = 0;
  for (;;) {
    // The colon tells a missing value (':') from an unknown option ('?').
    const int value = ::getopt_long(count, pointers.data(), ":", kOptions.data(), nullptr);
    if (value == -1) break;
    if (value == kHelp || value == kVersion) {
      options.action = value == kHelp ? Action::showHelp : Action::showVersion;
      return options;
    }
    if (value == ':') throw UsageError(nameOf(::optopt) + " needs a value");
    if (value == '?' && ::optopt > 255) throw UsageError(nameOf(::optopt) + " takes no value");
    if (value == '?') {
      std::string name = ::optopt != 0 ? nameOf(::optopt) : pointers[static_cast<std::size_t>(::optind) - 1];
      name.resize(std::min(name.find('='), name.size()));  // what follows may be a token
      const std::string meant = optionsThatBegin(name);
      name.insert(0, meant.empty() ? "unknown option '" : "option '");
      name.append(meant.empty() ? "'" : "' may be any of").append(meant);
      throw UsageError(name);
    }
    set(options, value, ::optarg ? ::optarg : "");
  }
  for (int i = ::optind; i < count; ++i) options.audio.emplace_back(pointers[static_cast<std::size_t>(i)]);
  checkTogether(options);
  return options;
}

std::string Options::help() {
  return R"(Usage: velmora-converse [OPTION]... AUDIO...
       velmora-converse [OPTION]... --microphone
       velmora-converse [OPTION]... --list-devices | --sign-in | --sign-out

Speaks each AUDIO file to the assistant, one turn of a conversation after the
other, and prints what was understood and answered. AUDIO is a sound file of any
rate and width (WAV, FLAC, ...), or - for raw samples on standard input (16 kHz,
mono, 16 bits, little-endian); of 10 minutes at the most.

The service:
  --deployment DIR        the folder that describes it
  --local                 the local assistant, started for this conversation
  --endpoint HOST[:PORT]  another address than the deployment's
  --roots FILE            other TLS roots (PEM) than the deployment's
  --token T               the access token; others can see it in the list of
                          processes. Without it: the local assistant's own, else
                          the one stored at sign-in
Without any of them: the deployment named by VELMORA_DEPLOYMENT, else the one in
the user's configuration folder, else the local assistant.

The account:
  --sign-in               sign in where the deployment is on this machine, without
                          a window; the tokens are stored for later conversations
  --sign-out              revoke and forget them

The conversation:
  --microphone            speak and be answered aloud, in place of AUDIO; goes on
                          as long as the assistant asks back
  --device NAME           another microphone than the default
  --list-devices          the microphones: name, description, "default"
  --fast                  send the audio at once and not in real time
  --volume N              the volume asked for, 0 to 100 (default 100)
  --timeout S             longest wait for the service after the last audio, in
                          seconds (default 30, at most 86400)

What comes out:
  --json                  one JSON object a turn on standard output
  --save-answer FILE      write the spoken answer (MP3); with several turns or the
                          microphone to FILE-1, FILE-2, ..., the number before the
                          extension
  --verbose               the engine's log on standard error
  --help, --version       this text, the version

Ends with 0 when every turn was answered, 1 when something failed (one line on
standard error says what), 2 when the arguments are wrong.
)";
}

std::string Options::version() { return "velmora-converse " VELMORA_VERSION "\n"; }

}  // namespace velmora
