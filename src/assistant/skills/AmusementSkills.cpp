// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Jokes and facts, from data files with one a line.
#include <sstream>
#include <string_view>

#include "assistant/skills/Data.h"
#include "assistant/skills/Tables.h"

namespace velmora {
namespace {

Answer anyLineOf(std::string_view data, const Request &request) {
  std::istringstream stream{std::string(data)};
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line.front() != '#') lines.push_back(line);
  }
  const int index = request.services.random(0, static_cast<int>(lines.size()) - 1);
  return {lines.at(static_cast<std::size_t>(index))};
}

Answer joke(const Request &request) { return anyLineOf(jokes(), request); }
Answer fact(const Request &request) { return anyLineOf(facts(), request); }

}  // namespace

SkillTable amusementSkills() {
  return {
      .skills =
          {
              {"joke",
               "(tell [me | us] | say | give me | do you know | do you have | have you got | let me "
               "hear | let's hear | i want [to hear] | i'd like to hear | i need) (a | another | any | "
               "some | one more | your best) [good | funny | other | more | new] (joke | jokes) | "
               "(tell me | say | do you know) something funny | make me (laugh | smile) | [another] "
               "joke | cheer me up | be funny | i (need | want) (a laugh | to laugh)",
               joke,
               {"tell me a joke"}},
              {"fact",
               "(tell [me | us] | give me | say | do you know | do you have | let me hear | let's hear "
               "| i want [to hear] | i'd like to hear) (a | an | another | any | some | one more) [fun "
               "| random | interesting | new | surprising] (fact | facts) | (tell me | teach me | say "
               "| do you know) something [interesting | new | surprising | i don't know] | [another | "
               "a | fun | random] (fun | random) fact | another fact | surprise me | <what_is> (a | "
               "an) (interesting | fun | random) fact",
               fact,
               {"tell me an interesting fact"}},
          },
  };
}

}  // namespace velmora
