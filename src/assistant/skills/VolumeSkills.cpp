// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How loud answers are spoken.
#include <algorithm>

#include "assistant/skills/Tables.h"
#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

constexpr int kStep = 20;
// Whoever asks for less still wants to hear the answer to the next request.
constexpr int kQuietest = 10;

Answer setTo(int volume) {
  const int percent = std::clamp(volume, kQuietest, 100);
  return {"The volume is now " + std::to_string(percent) + "%.", percent};
}

Answer turnUp(const Request &request) {
  if (request.volume >= 100) return {"The volume is at its highest already."};
  return setTo(request.volume + kStep);
}

Answer turnDown(const Request &request) {
  if (request.volume <= kQuietest) return {"The volume is at its lowest already."};
  return setTo(request.volume - kStep);
}

Answer setVolume(const Request &request) {
  return setTo(numberFromWords(request.slot("percent")).value_or(100));
}

Answer setExtreme(const Request &request) {
  const std::string extreme = request.slot("extreme");
  return setTo(extreme.starts_with("max") || extreme == "full volume" ? 100 : kQuietest);
}

Answer tellVolume(const Request &request) {
  return {"The volume is " + std::to_string(std::clamp(request.volume, 0, 100)) + "%."};
}

}  // namespace

SkillTable volumeSkills() {
  return {
      .rules = {{"percent", "zero | <below_hundred> | (a | one) hundred", true},
                {"extreme", "maximum | full volume | minimum", true}},
      .skills =
          {
              {"volume up",
               "turn (the volume | it | the sound | yourself) up [a (bit | little)] | turn up the "
               "(volume | sound) | volume up | [(speak | talk | be | get)] [a (bit | little)] louder | "
               "(speak | talk) up | make it [a (bit | little)] louder | (increase | raise) the volume | "
               "(you are | you're | that's | it's) too (quiet | soft) | i (can't | cannot) hear you | "
               "more volume",
               turnUp,
               {"turn the volume up", "speak louder"}},
              {"volume down",
               "turn (the volume | it | the sound | yourself) down [a (bit | little)] | turn down the "
               "(volume | sound) | volume down | [(speak | talk | be | make it | get)] [a (bit | "
               "little)] (quieter | softer) | (speak | talk) [a (bit | little)] more (quietly | softly) "
               "| (decrease | lower | reduce) the volume | (you are | that's | you're | it's) too loud | "
               "not so loud | less volume",
               turnDown,
               {"turn the volume down", "speak more quietly"}},
              {"set volume",
               "[(set | change | turn | put) [the]] volume [up | down] [to | at] <percent> [percent]",
               setVolume,
               {"set the volume to fifty percent"}},
              {"extreme volume",
               "(set | turn | put) the volume [up | down] to [the] <extreme>",
               setExtreme,
               {"set the volume to maximum"}},
              {"tell volume",
               "how loud (are you | is it | is the volume) [<now>] | <what_is> (the | your) [current] "
               "volume [level] [<now>]",
               tellVolume,
               {"what is the volume"}},
          },
  };
}

}  // namespace velmora
