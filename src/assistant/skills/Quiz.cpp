// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Three questions of general knowledge.
#include <algorithm>
#include <span>
#include <string_view>

#include "assistant/skills/Tables.h"

namespace velmora {
namespace {

constexpr auto kName = "quiz";
constexpr int kLength = 3;
constexpr auto kCurrent = "current";
constexpr auto kAsked = "asked";
constexpr auto kRight = "right";

struct QuizQuestion {
  std::string_view text;
  std::string_view answers;  ///< those that count, apart by |, the one to be told first
  std::string_view shown;
};

constexpr QuizQuestion kQuestions[]{
    {"What is the capital of France?", "paris", "Paris"},
    {"What is the capital of Japan?", "tokyo", "Tokyo"},
    {"What is the capital of Italy?", "rome", "Rome"},
    {"What is the capital of Egypt?", "cairo", "Cairo"},
    {"How many continents are there?", "seven", "seven"},
    {"How many legs does a spider have?", "eight", "eight"},
    {"How many minutes are in two hours?",
     "one hundred twenty | a hundred twenty | one hundred and twenty | a hundred and twenty", "120"},
    {"How many players of one team are on the field in soccer?", "eleven", "eleven"},
    {"Which planet is closest to the sun?", "mercury", "Mercury"},
    {"Which planet is known as the red planet?", "mars", "Mars"},
    {"Which is the largest planet of our solar system?", "jupiter", "Jupiter"},
    {"Which is the largest ocean?", "the pacific [ocean] | pacific [ocean]", "the Pacific"},
    {"Which is the largest animal on earth?", "the blue whale | a blue whale | blue whale | whale",
     "the blue whale"},
    {"Which is the tallest animal?", "the giraffe | a giraffe | giraffe", "the giraffe"},
    {"Which metal is liquid at room temperature?", "mercury", "mercury"},
    {"Which gas do plants take from the air?", "carbon dioxide", "carbon dioxide"},
    {"Who painted the Mona Lisa?", "leonardo [da vinci] | da vinci", "Leonardo da Vinci"},
    {"Which language has the most native speakers?", "chinese | mandarin [chinese]", "Mandarin Chinese"},
    {"What color do you get from blue and yellow?", "green", "green"},
    {"Which month has the fewest days?", "february", "February"},
};
constexpr int kCount = static_cast<int>(std::size(kQuestions));

const QuizQuestion &questionAt(int index) { return kQuestions[std::clamp(index, 0, kCount - 1)]; }

/// Every answer is a rule of its own, so that a wrong answer is heard as what it was.
std::string answerPhrases() {
  std::string phrases;
  for (const QuizQuestion &question : kQuestions)
    (phrases += phrases.empty() ? "" : " | ") += question.answers;
  return phrases +
         " | <below_hundred> | i don't know | i do not know | no idea | i have no idea | pass | skip it";
}

bool isRight(const QuizQuestion &question, const std::string &words) {
  Grammar grammar({});
  grammar.add("[is it | it is | it's] (" + std::string(question.answers) + ')');
  return grammar.match(words).has_value();
}

std::string ask(const Conversation &conversation) {
  return std::string(questionAt(conversation.question->values.at(kCurrent)).text);
}

Answer start(const Request &request) {
  const int first = request.services.random(0, kCount - 1);
  request.conversation.question =
      PendingQuestion{.name = kName, .values = {{kCurrent, first}, {kAsked, 1}, {kRight, 0}}};
  return {"Here are three questions. " + ask(request.conversation)};
}

Answer check(const Request &request) {
  auto &values = request.conversation.question->values;
  const QuizQuestion &question = questionAt(values[kCurrent]);
  const bool right = isRight(question, request.slot("quiz_answer"));
  if (right) ++values[kRight];
  std::string text = right ? "That is right!" : "The answer is " + std::string(question.shown) + '.';
  if (values[kAsked] < kLength) {
    ++values[kAsked];
    // Seven and the number of questions have no common factor: no question comes twice.
    values[kCurrent] = (values[kCurrent] + 7) % kCount;
    return {text + ' ' + ask(request.conversation)};
  }
  const int score = values[kRight];
  request.conversation.question.reset();
  text += " You had " + std::to_string(score) + " of " + std::to_string(kLength) + " right.";
  if (score == kLength) text += " Well done!";
  return {text};
}

std::string giveUp(const Conversation &conversation) {
  return "All right, let us stop. The answer was " +
         std::string(questionAt(conversation.question->values.at(kCurrent)).shown) + '.';
}

}  // namespace

SkillTable quiz() {
  return {
      .rules = {{"quiz_answer", answerPhrases(), true}},
      .skills = {{"quiz",
                  "(let's | let us | can we | could we | shall we | i want to | i'd like to | do you want "
                  "to) (play | do | have | start | take | try) (a | the | another) [little | short | "
                  "trivia] quiz [game] | (start | play | begin | do) (a | the | another) [trivia] quiz "
                  "[with me | game] | quiz me | (give me | i want | i'd like) (a | another) quiz "
                  "[question] | (ask | give) me (a | another | some | a few) [quiz | trivia] (question | "
                  "questions) | ask me something | (test | check) (my knowledge | me) | [let's] play "
                  "trivia",
                  start,
                  {"quiz me", "let's do a quiz"}}},
      .questions = {{kName, "[is it | it is | it's | i think it's | i think it is | that's] <quiz_answer>",
                     check, ask, giveUp}},
  };
}

}  // namespace velmora
