// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the assistant can do, who it is, courtesies, and saying something again.
#include <algorithm>

#include "assistant/skills/Tables.h"

namespace velmora {
namespace {

/// Some examples of what to ask, others each time.
Answer help(const Request &request) {
  std::vector<std::string> examples;
  for (const SkillTable &table : skillTables()) {
    // Nobody needs to be told how to say thanks.
    if (table.skills.front().answer == help) continue;
    for (const Skill &skill : table.skills) examples.push_back('"' + skill.examples.front() + '"');
  }
  std::string text =
      "I can tell the time and dates, calculate, convert units, keep your shopping list, play games and "
      "more.";
  constexpr std::size_t kShown = 3;
  for (std::size_t i = 0; i < kShown && i < examples.size(); ++i) {
    const auto pick = static_cast<std::size_t>(
        request.services.random(static_cast<int>(i), static_cast<int>(examples.size()) - 1));
    std::swap(examples[i], examples[pick]);
    text += (i == 0 ? " Try: " : i + 1 == kShown ? ", or: " : ", ") + examples[i];
  }
  return {text + '.'};
}

Answer greet(const Request &) { return {"Hello! It is nice to hear you."}; }
Answer farewell(const Request &) { return {"Goodbye!"}; }
Answer acceptThanks(const Request &) { return {"You are welcome."}; }
Answer introduce(const Request &) {
  return {"I am Velmora, your assistant. All that you say stays on this machine."};
}
Answer tellState(const Request &) { return {"I am fine, thank you. What can I do for you?"}; }
Answer acceptStop(const Request &) { return {"All right."}; }

Answer sayAgain(const Request &request) {
  const std::string &last = request.conversation.lastAnswer;
  if (last.empty()) return {"I have not said anything yet that I could repeat.", {}, true};
  return {last, {}, true};
}

}  // namespace

SkillTable smallTalk() {
  return {
      .skills =
          {
              {"help",
               "what can you do [for me] | what can i (say | ask) [you] | what can you help me with | "
               "(can | could) you help me | how can you help me | help me | i need help | "
               "what do you know | what else can you do",
               help,
               {"what can you do"}},
              {"greeting",
               "hello [there | assistant] | hi there | good (morning | afternoon | evening)",
               greet,
               {"hello there"}},
              {"farewell",
               "goodbye | bye bye | good night | see you (later | soon | tomorrow)",
               farewell,
               {"see you later"}},
              {"thanks",
               "thank you [very much | so much] | thanks [a lot | very much] | many thanks",
               acceptThanks,
               {"thank you very much"}},
              {"introduction",
               "who are you | <what_is> your name | what are you | tell me (your name | who you are)",
               introduce,
               {"who are you"}},
              {"well-being", "how are you [doing] [today] | how do you do", tellState, {"how are you"}},
              {"repeat that",
               "(repeat | say) (that | it) [again] | (repeat | say) that once more | what did you say | "
               "pardon me | come again | i didn't (hear | catch | get) (that | you) | say again | once more",
               sayAgain,
               {"repeat that"}},
              {"stop",
               "never mind | forget (it | about it) | cancel that | be quiet | "
               "stop (it | that | talking | playing | the game | the quiz)",
               acceptStop,
               {"never mind"}},
          },
  };
}

}  // namespace velmora
