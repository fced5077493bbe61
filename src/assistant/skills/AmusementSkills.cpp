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
               "(tell me | say | give me) (a | another) [funny] joke | tell me something funny | "
               "do you know (a | any | another) (joke | jokes) | make me laugh | another joke | "
               "i want to hear a joke | cheer me up",
               joke,
               {"tell me a joke"}},
              {"fact",
               "(tell me | give me) (a | an | another) [fun | random | interesting] fact | tell me something "
               "[interesting | new] | "
               "another fact | teach me something [new] | do you know (a | an) [fun | interesting] fact",
               fact,
               {"tell me an interesting fact"}},
          },
  };
}

}  // namespace velmora
