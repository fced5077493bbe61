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
Answer refuse(const Request &) { return {"I am afraid that is beyond me. You can ask me: what can you do?"}; }
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
               "what (can | could) you do [for me] | what (can | could | should | may) i (say | ask) "
               "[you | to you] | what can you help [me] with | (can | could) you help [me] | how (can "
               "| could | do) you help [me] | how (can i | do i | should i) (use you | talk to you) | "
               "help me | i need [some | your] help | what (do you know | else can you do | are you "
               "able to do | can you tell me | are you good at) | what (kind of | sort of) (questions "
               "| things) can (i ask [you] | you (do | answer)) | (what | which) (commands | questions "
               "| things) (do you (know | understand) | can i (use | say | ask [you]) | can you (do | "
               "answer | understand)) | (tell | show) me what (you can do | i can (say | ask | do)) | "
               "(show me | give me) (some examples | an example) | what are your (skills | abilities) "
               "| how (does this | do you) work | what can i use you for",
               help,
               {"what can you do"}},
              {"greeting",
               "hello [there | again | assistant | my friend] | hi [there | assistant] | hey there | "
               "[hi | hello] (how's | how is) it going | [hello | hi] good (morning | afternoon | "
               "evening | day) [to you | assistant] | (nice | good | pleased) to (meet | see | hear) "
               "you | what's up | greetings",
               greet,
               {"hello there"}},
              {"farewell",
               "(goodbye | bye) [for now | now | then | assistant] | bye bye | good night [assistant] "
               "| see you [later | soon | tomorrow | again | around | next time | then] | (talk | "
               "speak) to you (later | soon | tomorrow) | have a (nice | good | great) (day | evening "
               "| night | weekend) | until (next time | tomorrow | later) | take care | i (have to | "
               "must | need to) (go | leave) [now] | i'm (going | leaving) [now] | that's all for (now "
               "| today)",
               farewell,
               {"see you later"}},
              {"thanks",
               "thank you [very much | so much | a lot | again] | (thank you | thanks) for (that | "
               "your help | the help | everything | helping [me] | the answer) | thanks [a lot | very "
               "much | so much | again] | many thanks | [thanks | thank you] (that was | that's | that "
               "is | you are | you're | you have been | you've been) [very | really | so] (helpful | "
               "great | kind | nice | good | perfect) [of you | thanks | thank you] | [great | perfect "
               "| okay | wonderful] (thanks | thank you) | i [really] appreciate (it | that | your "
               "help) | (well done | good job)",
               acceptThanks,
               {"thank you very much"}},
              {"introduction",
               "who are you | <what_is> your name | what are you [called] | tell me (your name | who "
               "you are | [something | more | a bit] about yourself | what you are) | introduce "
               "yourself | who am i (talking | speaking) (to | with) | what (should | can | do | may) "
               "i call you | do you have a name | are you ([a] human | a robot | a [real] person | a "
               "machine | a computer | real) | who is this | what kind of (assistant | robot | "
               "machine) are you | what do (people | they) call you | (can | may) i (know | ask) (your "
               "name | who you are)",
               introduce,
               {"who are you"}},
              {"well-being",
               "how are you [doing | feeling] [today | <now> | this (morning | evening)] | how do you "
               "(do | feel) [today] | how have you been | are you [feeling | doing] (all right | okay "
               "| fine | well | good) [today] | how (is | was | has) your day [going | been] | how are "
               "things [going | with you] | is everything (all right | okay | fine) | how is "
               "(everything | life) [going]",
               tellState,
               {"how are you"}},
              {"repeat that",
               "(repeat | say) (that | it | your [last] answer | yourself | the [last] answer) [again "
               "| once more | one more time] | what was (the | your) [last] answer | what did you "
               "[just] say | what (was that | were you saying) [again] | pardon [me] | come again | "
               "[sorry] i (didn't | did not) (hear | catch | get | understand) (that | you | it | what "
               "you said) | say again | once more | one more time | (tell me | read) (that | it) again "
               "| sorry what [was that | did you say]",
               sayAgain,
               {"repeat that"}},
              // What people ask of other assistants, and talk that is not meant for one. Without it the
              // recogniser would find what sounds most like it among the requests that are understood.
              {"beyond",
               "(how is | how's | what's | what is | tell me | give me) the (weather | forecast | "
               "temperature) [like] [today | tomorrow | this weekend | outside | ...] | (will it | is it "
               "going to | is it) (rain | snow | raining | snowing | cold | hot | sunny | be ...) [...] "
               "| how (hot | cold | warm) is it [...] | do i need (an umbrella | a jacket | ...) | (set "
               "| start | cancel | stop) (an | a | the | my) (alarm | timer | reminder) [...] | wake me "
               "up ... | remind me ... | call ... | (send | write) (a | an) (message | email | text | "
               "letter) [...] | read [me] (the | my) (news | mail | messages | email | ...) | what's "
               "(the news | in the news | new) [...] | play (some | the | my | a) (music | song | radio "
               "| ...) [...] | turn (on | off) ... | (open | close | order | book | translate | search | "
               "show me | look up) ... | (navigate | drive | take me) to ... | how do i (get | make | "
               "cook | ...) ... | where (is | are | did | can | do) ... | who (is | was | are | wrote | "
               "invented | won) ... | why (is | are | do | does | did) ... | how (tall | old | far | big "
               "| high | fast | heavy) (is | are) ... | (what is | what's) the (capital | name | "
               "population | meaning) of ... | what time (does | do | will) ... | what (should | would | "
               "does | did) ... | when (does | did | do) ... | (do you | did you | would you | will you) "
               "... | is there ... | (i think | i want to | i was | we | he | she | they | my | that | "
               "this | and | so | but | dear | the) ...",
               refuse,
               {"what's the weather like"}},
              {"stop",
               "never mind [that | it] | forget (it | about it | that | about that) | cancel [that | "
               "it | this] | be quiet | (stop | quit) (it | that | this | talking | speaking | playing "
               "| the game | the quiz | now) | that's (enough | all) | that is (enough | all) | leave "
               "it | no more | shut up | (don't | do not) bother | i changed my mind | don't worry "
               "[about it] | no (thanks | thank you) | enough of (that | this)",
               acceptStop,
               {"never mind"}},
          },
  };
}

}  // namespace velmora
