// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdio>

#include "assistant/NumberWords.h"
#include "assistant/Skill.h"

namespace velmora {
namespace {

using namespace std::chrono;

constexpr std::array kWeekdays{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::array kMonths{"January", "February", "March",     "April",   "May",      "June",
                             "July",    "August",   "September", "October", "November", "December"};

std::string twoDigits(std::int64_t number) { return (number < 10 ? "0" : "") + std::to_string(number); }

std::optional<Answer> tellTime(const Request &request) {
  const local_seconds now = request.clock();
  const hh_mm_ss time(now - floor<days>(now));
  const auto hour = time.hours().count();
  const auto minute = time.minutes().count();
  const auto hourOfTwelve = (hour + 11) % 12 + 1;

  std::string speech = "It is ";
  if (minute == 0 && hourOfTwelve == 12) {
    speech += hour == 0 ? "midnight" : "noon";
  } else {
    speech += numberInWords(hourOfTwelve);
    speech += minute == 0 ? " o'clock" : (minute < 10 ? " oh " : " ") + numberInWords(minute);
    speech += hour < 12 ? " in the morning" : hour < 18 ? " in the afternoon" : " in the evening";
  }
  return Answer(
      "It is " + std::to_string(hourOfTwelve) + ':' + twoDigits(minute) + (hour < 12 ? " AM." : " PM."),
      speech + '.');
}

std::optional<Answer> tellDate(const Request &request) {
  const auto today = floor<days>(request.clock());
  const year_month_day date(today);
  const int day = static_cast<int>(static_cast<unsigned>(date.day()));
  const int year = static_cast<int>(date.year());
  const std::string begin = std::string("Today is ") + kWeekdays.at(weekday(today).c_encoding()) + ", ";
  const std::string month = kMonths.at(static_cast<unsigned>(date.month()) - 1);
  return Answer(begin + std::to_string(day) + ' ' + month + ' ' + std::to_string(year) + '.',
                begin + "the " + ordinalInWords(day) + " of " + month + ", " + yearInWords(year) + '.');
}

/// A quotient to hundredths.
Answer divide(int dividend, int divisor, const std::string &text, const std::string &speech) {
  if (divisor == 0) return {"Nothing can be divided by zero."};
  const int hundredths = (dividend * 200 + divisor) / (divisor * 2);
  const bool exact = dividend * 100 % divisor == 0;
  if (hundredths == 0 && !exact) return {text + " < 0.01", speech + " is less than one hundredth."};

  std::string shown = std::to_string(hundredths / 100);
  std::string spoken = numberInWords(hundredths / 100);
  if (std::string fraction = twoDigits(hundredths % 100); fraction != "00") {
    if (fraction.back() == '0') fraction.pop_back();
    shown += '.' + fraction;
    spoken += " point";
    for (const char digit : fraction) spoken += ' ' + numberInWords(digit - '0');
  }
  return {text + (exact ? " = " : " ≈ ") + shown, speech + (exact ? " is " : " is about ") + spoken + '.'};
}

std::optional<Answer> calculate(const Request &request) {
  const auto left = numberFromWords(request.words.str(1));
  const auto right = numberFromWords(request.words.str(3));
  if (!left || !right) return std::nullopt;
  const std::string &name = request.words.str(2);
  const char *const sign = name == "plus"         ? " + "
                           : name == "minus"      ? " - "
                           : name == "divided by" ? " ÷ "
                                                  : " × ";
  const std::string text = std::to_string(*left) + sign + std::to_string(*right);
  const std::string speech = numberInWords(*left) + ' ' + name + ' ' + numberInWords(*right);
  if (name == "divided by") return divide(*left, *right, text, speech);
  const int result = name == "plus" ? *left + *right : name == "minus" ? *left - *right : *left * *right;
  return Answer(text + " = " + std::to_string(result), speech + " is " + numberInWords(result) + '.');
}

std::optional<Answer> tellSkills(const Request &) {
  return Answer("I can tell the time and the date, calculate, and play a guessing game.");
}

std::optional<Answer> greet(const Request &) { return Answer("Hello! It is nice to hear you."); }

std::optional<Answer> acceptThanks(const Request &) { return Answer("You are welcome."); }

std::optional<Answer> play(const Request &request) { return startGame(request.conversation, request.random); }

}  // namespace

std::span<const Skill> skills() {
  static constexpr Skill table[] = {
      {"arithmetic",
       "(?:(?:what is|what's|how much is|calculate) )?"
       "(.+) (plus|minus|times|multiplied by|divided by) (.+)",
       calculate},
      {"game", "(?:.+ )?(?:play|start) (?:a|the) (?:number )?(?:guessing )?game", play},
      {"date", "(?:what|which) (?:day|date) .*|.*\\b(?:the|today's) date\\b.*|tell me what day it is",
       tellDate},
      {"time", "(?:.+ )?(?:what|the) time\\b.*", tellTime},
      {"help", "what can (?:you|i) .*|(?:.+ )?help me|i need help", tellSkills},
      {"greeting", "(?:hello|hi) .+|good (?:morning|afternoon|evening).*", greet},
      {"thanks", "thank you.*|thanks .+", acceptThanks},
  };
  return table;
}

}  // namespace velmora
