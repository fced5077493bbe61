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
  const bool isQuiet = extreme == "minimum" || extreme == "lowest" || extreme.ends_with("down");
  return setTo(isQuiet ? kQuietest : 100);
}

Answer tellVolume(const Request &request) {
  return {"The volume is " + std::to_string(std::clamp(request.volume, 0, 100)) + "%."};
}

}  // namespace

SkillTable volumeSkills() {
  return {
      .rules = {{"percent", "zero | <below_hundred> | (a | one) hundred", true},
                {"extreme", "maximum | full | highest | minimum | lowest | all the way up | all the way down",
                 true}},
      .skills =
          {
              {"volume up",
               "turn (the volume | it | the sound | yourself | your volume | your voice) up [a (bit | "
               "little) [more] | more] | turn up the (volume | sound) [a (bit | little)] | volume up | "
               "[(speak | talk | be | get | go)] [a (bit | little) | much] louder | (speak | talk) up "
               "[a (bit | little)] | make it [a (bit | little)] louder | (increase | raise) (the | "
               "your) (volume | voice) [a (bit | little)] | (you are | you're | that's | it's | this "
               "is) too (quiet | soft) | i (can't | cannot) hear you | more volume | (make | set | "
               "turn) (the | your) volume (louder | higher)",
               turnUp,
               {"turn the volume up", "speak louder"}},
              {"volume down",
               "turn (the volume | it | the sound | yourself | your volume | your voice) down [a (bit "
               "| little) [more] | more] | turn down the (volume | sound) [a (bit | little)] | volume "
               "down | [(speak | talk | be | make it | get | go)] [a (bit | little) | much] (quieter | "
               "softer) | (speak | talk) [a (bit | little)] more (quietly | softly) | (decrease | "
               "lower | reduce) (the | your) (volume | voice) [a (bit | little)] | [you are | that's | "
               "you're | it's | this is] too loud | not so loud | less volume | (make | set | turn) "
               "(the | your) volume (quieter | lower)",
               turnDown,
               {"turn the volume down", "speak more quietly"}},
              {"set volume",
               "[(set | change | turn | put | adjust | make) [the | your]] volume [level] [up | down] "
               "[to | at] <percent> [percent]",
               setVolume,
               {"set the volume to fifty percent"}},
              {"extreme volume",
               "(set | turn | put) (the | your) volume [up | down] to [the] <extreme> [volume] | "
               "<extreme> volume | turn (the volume | it | the sound) <extreme>",
               setExtreme,
               {"set the volume to maximum"}},
              {"tell volume",
               "how loud (are you | is it | is the volume | is your voice) [<now>] | (<what_is> | tell "
               "me) (the | your) [current] volume [level] [<now>] | <what_is> the volume (set to | at) "
               "| what volume (are you | is it) [at | set to]",
               tellVolume,
               {"what is the volume"}},
          },
  };
}

}  // namespace velmora
