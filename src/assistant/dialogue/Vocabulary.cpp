// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/Vocabulary.h"

#include <algorithm>
#include <array>
#include <sstream>

#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

constexpr std::array<std::string_view, 12> kMonths{"january",   "february", "march",    "april",
                                                   "may",       "june",     "july",     "august",
                                                   "september", "october",  "november", "december"};
constexpr std::array<std::string_view, 7> kWeekdays{"monday", "tuesday",  "wednesday", "thursday",
                                                    "friday", "saturday", "sunday"};

struct Holiday {
  std::string_view name;
  int month;
  int day;  ///< for those that move: the first day that it may be
  enum class Moves { never, toWeekday, withEaster } moves = Moves::never;
  int by = 0;  ///< the weekday, or how many days after Easter
};
using enum Holiday::Moves;
constexpr Holiday kHolidays[]{
    {"new year", 1, 1},
    {"new year's day", 1, 1},
    {"valentine's day", 2, 14},
    {"saint patrick's day", 3, 17},
    {"good friday", 3, 20, withEaster, -2},
    {"easter", 3, 22, withEaster, 0},
    {"easter sunday", 3, 22, withEaster, 0},
    {"easter monday", 3, 23, withEaster, 1},
    {"may day", 5, 1},
    {"mother's day", 5, 8, toWeekday, Qt::Sunday},
    {"father's day", 6, 15, toWeekday, Qt::Sunday},
    {"independence day", 7, 4},
    {"labor day", 9, 1, toWeekday, Qt::Monday},
    {"halloween", 10, 31},
    {"thanksgiving", 11, 22, toWeekday, Qt::Thursday},
    {"christmas eve", 12, 24},
    {"christmas", 12, 25},
    {"christmas day", 12, 25},
    {"boxing day", 12, 26},
    {"new year's eve", 12, 31},
};

constexpr auto kSpellable =
    "apple | banana | orange | cherry | house | garden | kitchen | window | table | chair | school | teacher "
    "| "
    "student | language | music | guitar | piano | picture | people | person | friend | family | mother | "
    "father | "
    "brother | sister | daughter | neighbor | beautiful | necessary | necessity | separate | different | "
    "difficult | "
    "important | interesting | restaurant | business | calendar | receive | believe | weird | rhythm | "
    "science | "
    "scientist | physics | chemistry | mathematics | computer | keyboard | telephone | assistant | elephant "
    "| "
    "giraffe | crocodile | butterfly | kangaroo | squirrel | penguin | rabbit | horse | mountain | river | "
    "ocean | "
    "island | desert | weather | thunder | lightning | hurricane | temperature | february | wednesday | "
    "tuesday | "
    "september | knowledge | know | knife | island | castle | answer | question | sentence | dictionary | "
    "library | "
    "government | parliament | president | country | foreign | definitely | embarrass | accommodate | "
    "occasion | "
    "occurrence | success | successful | vacuum | yacht | queue | bicycle | vehicle | engine | airplane | "
    "umbrella | "
    "chocolate | vanilla | vegetable | broccoli | spaghetti | breakfast | medicine | doctor | hospital | "
    "surgeon | "
    "psychology | philosophy | pneumonia | happiness | friendship | freedom | hello | world | velocity | "
    "yellow | "
    "purple | orchestra | symphony | theater | museum | conscience | committee | maintenance | privilege | "
    "pronunciation | recommend | tomorrow | twelfth | fourteen | forty | eight | ninth | thorough | through";

/// What people are made to say after somebody, beside the words that they ask to be spelled.
constexpr auto kEveryday =
    "a | am | an | and | are | at | bad | be | big | but | cat | come | day | do | dog | everybody | "
    "everyone "
    "| "
    "for | go | good | great | happy | have | he | here | home | how | i | i'm | in | is | it | it's | like "
    "| "
    "little | love | make | man | me | morning | my | never | nice | night | no | not | now | of | on | one "
    "| "
    "our | "
    "please | robot | she | so | sun | thank | thanks | that | the | there | they | this | time | to | today "
    "| "
    "very | want | was | we | what | will | with | woman | yes | you | your";

template <typename Table>
std::string alternatives(const Table &table) {
  std::string phrase;
  for (const std::string_view word : table) (phrase += phrase.empty() ? "" : " | ") += word;
  return phrase;
}

std::string ordinals() {
  std::string phrase;
  for (int day = 1; day <= 31; ++day) (phrase += day == 1 ? "" : " | ") += ordinalInWords(day);
  return phrase;
}

std::string holidays() {
  std::string phrase;
  for (const Holiday &holiday : kHolidays) (phrase += phrase.empty() ? "" : " | ") += holiday.name;
  return phrase;
}

template <typename Table>
std::optional<int> placeOf(const Table &table, std::string_view word) {
  const auto found = std::find(table.begin(), table.end(), word);
  if (found == table.end()) return std::nullopt;
  return static_cast<int>(found - table.begin()) + 1;
}

/// The words without those that say nothing.
std::string without(std::string_view words, std::initializer_list<std::string_view> idle) {
  std::istringstream stream{std::string(words)};
  std::string kept;
  for (std::string word; stream >> word;) {
    if (std::find(idle.begin(), idle.end(), word) == idle.end()) (kept += kept.empty() ? "" : " ") += word;
  }
  return kept;
}

bool takePrefix(std::string &text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.erase(0, prefix.size());
  return true;
}

bool takeSuffix(std::string &text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.erase(text.size() - suffix.size());
  return true;
}

/// Easter Sunday of the Gregorian calendar (the computation of Meeus, Jones and Butcher).
QDate easterOf(int year) {
  const int a = year % 19, b = year / 100, c = year % 100;
  const int h = (19 * a + b - b / 4 - (b - (b + 8) / 25 + 1) / 3 + 15) % 30;
  const int l = (32 + 2 * (b % 4) + 2 * (c / 4) - h - c % 4) % 7;
  const int m = (a + 11 * h + 22 * l) / 451;
  const int n = h + l - 7 * m + 114;
  return {year, n / 31, n % 31 + 1};
}

QDate holidayOf(const Holiday &holiday, int year) {
  const QDate first(year, holiday.month, holiday.day);
  switch (holiday.moves) {
    case never: break;
    case toWeekday: return first.addDays((holiday.by - first.dayOfWeek() + 7) % 7);
    case withEaster: return easterOf(year).addDays(holiday.by);
  }
  return first;
}

QDate yearly(int month, int day, QDate today, Which which) {
  for (int year = today.year(); year <= today.year() + 8; ++year) {
    const QDate date(year, month, day);  // there is not every year a 29 February
    if (date.isValid() && (which == Which::nearest || date >= today)) return date;
  }
  return {};
}

std::optional<QDate> monthDay(const std::string &text, QDate today, Which which) {
  // "third may" or "may third", whichever way it was said.
  const std::size_t lastBlank = text.rfind(' ');
  const std::size_t firstBlank = text.find(' ');
  if (lastBlank == std::string::npos) return std::nullopt;
  auto month = placeOf(kMonths, text.substr(lastBlank + 1));
  auto day = ordinalFromWords(text.substr(0, lastBlank));
  if (!month || !day) {
    month = placeOf(kMonths, text.substr(0, firstBlank));
    const std::string rest = text.substr(firstBlank + 1);
    day = ordinalFromWords(rest);
    if (!day) day = numberFromWords(rest);
  }
  if (!month || !day) return std::nullopt;
  const QDate date = yearly(*month, *day, today, which);
  return date.isValid() ? std::optional(date) : std::nullopt;
}

std::optional<QDate> relativeDay(std::string text, QDate today) {
  if (text == "today") return today;
  if (text == "tomorrow") return today.addDays(1);
  if (text == "yesterday") return today.addDays(-1);
  if (text == "day after tomorrow") return today.addDays(2);
  if (text == "day before yesterday") return today.addDays(-2);
  if (text == "weekend") text = "saturday";
  const bool after = takePrefix(text, "next ");
  const bool before = !after && takePrefix(text, "last ");
  if (const auto weekday = placeOf(kWeekdays, text)) {
    const int ahead = (*weekday - today.dayOfWeek() + 7) % 7;
    if (before) return today.addDays(ahead == 0 ? -7 : ahead - 7);
    return today.addDays(ahead == 0 && after ? 7 : ahead);
  }
  return std::nullopt;
}

std::optional<QDate> countedDays(std::string text, QDate today) {
  const bool later = takePrefix(text, "in ");
  if (!later && !takeSuffix(text, " ago") && !takeSuffix(text, " from now")) return std::nullopt;
  const bool weeks = takeSuffix(text, " weeks") || takeSuffix(text, " week");
  if (!weeks && !takeSuffix(text, " days") && !takeSuffix(text, " day")) return std::nullopt;
  const auto count = decimalFromWords(text);
  if (!count) return std::nullopt;
  return today.addDays(static_cast<qint64>(*count) * (weeks ? 7 : 1));
}

}  // namespace

std::vector<Rule> vocabulary() {
  return {
      {"what_is", "what is | what's"},
      {"how_much_is", "what is | what's | how much is | calculate | compute | work out"},
      {"now", "now | right now | at the moment"},
      {"ask", "tell me | give me | do you know | i want to know | i'd like to know"},
      {"digit", "one | two | three | four | five | six | seven | eight | nine"},
      {"teen",
       "ten | eleven | twelve | thirteen | fourteen | fifteen | sixteen | seventeen | eighteen | nineteen"},
      {"tens", "twenty | thirty | forty | fifty | sixty | seventy | eighty | ninety"},
      {"below_hundred", "<digit> | <teen> | <tens> [<digit>]"},
      {"below_thousand", "<below_hundred> | (a | <digit>) hundred [[and] <below_hundred>]"},
      {"any_number",
       "zero | <below_thousand> [thousand [[and] <below_thousand>]] | a thousand [[and] <below_hundred>] | "
       "(a | one) million"},
      {"fraction", "point (zero | <digit>)+"},
      {"decimal", "[minus] <any_number> [<fraction>]", true},
      {"quantity",
       "[minus] <below_thousand> [thousand] [<fraction>] | a | an | half (a | an) | <digit> and a half",
       true},
      {"word", kSpellable, true},
      {"said", std::string(kSpellable) + " | " + kEveryday, true},
      {"weekday", alternatives(kWeekdays)},
      {"month", alternatives(kMonths)},
      {"ordinal", ordinals()},
      {"date", "[the] <ordinal> of <month> | <month> [the] <ordinal> | <month> <below_hundred>"},
      {"day",
       "<date> | <weekday> | (next | last) <weekday> | this weekend | the weekend | <holidays> | today | "
       "tomorrow | yesterday | the day (after tomorrow | before yesterday) | "
       "in <below_hundred> (days | weeks) | in a week | a week ago | <below_hundred> (days | weeks) ago | "
       "a week from now | <below_hundred> (days | weeks) from now",
       true},
      {"holidays", holidays()},
      {"hour", "one | two | three | four | five | six | seven | eight | nine | ten | eleven | twelve"},
      {"half_of_day", "a.m. | p.m. | in the (morning | afternoon | evening) | at night"},
      {"clock",
       "<hour> [o'clock] [<half_of_day>] | <hour> (<teen> | <tens> [<digit>] | oh <digit>) [<half_of_day>] | "
       "half past <hour> | [a] quarter (past | to) <hour> | noon | midnight",
       true},
  };
}

std::optional<QDate> dayFromWords(std::string_view words, QDate today, Which which) {
  std::string text = without(words, {"the", "of", "this"});
  for (const Holiday &holiday : kHolidays) {
    if (text != holiday.name) continue;
    const QDate day = holidayOf(holiday, today.year());
    return which == Which::next && day < today ? holidayOf(holiday, today.year() + 1) : day;
  }
  if (auto day = relativeDay(text, today)) return day;
  if (auto day = countedDays(text, today)) return day;
  return monthDay(text, today, which);
}

std::optional<QTime> clockFromWords(std::string_view words, QTime now) {
  std::string text = without(words, {"o'clock", "a", "in", "the", "at"});
  if (text == "noon") return QTime(12, 0);
  if (text == "midnight") return QTime(0, 0);
  std::optional<bool> afternoon;
  if (takeSuffix(text, " p.m.") || takeSuffix(text, " afternoon") || takeSuffix(text, " evening") ||
      takeSuffix(text, " night")) {
    afternoon = true;
  } else if (takeSuffix(text, " a.m.") || takeSuffix(text, " morning")) {
    afternoon = false;
  }
  int minute = 0;
  int hourShift = 0;
  if (takePrefix(text, "half past ")) {
    minute = 30;
  } else if (takePrefix(text, "quarter past ")) {
    minute = 15;
  } else if (takePrefix(text, "quarter to ")) {
    minute = 45;
    hourShift = -1;
  } else if (const std::size_t blank = text.find(' '); blank != std::string::npos) {
    std::string rest = text.substr(blank + 1);
    takePrefix(rest, "oh ");
    const auto said = numberFromWords(rest);
    if (!said || *said > 59) return std::nullopt;
    minute = *said;
    text.erase(blank);
  }
  const auto hour = numberFromWords(text);
  if (!hour || *hour < 1 || *hour > 12) return std::nullopt;
  const int morningHour = (*hour + hourShift + 12) % 12;
  const QTime morning(morningHour, minute);
  const QTime evening(morningHour + 12, minute);
  if (afternoon) return *afternoon ? evening : morning;
  return now < morning || now >= evening ? morning : evening;
}

std::string dateText(QDate date) {
  const auto capital = [](std::string_view name) {
    std::string text(name);
    text[0] = static_cast<char>(text[0] - 'a' + 'A');
    return text;
  };
  return capital(kWeekdays[static_cast<std::size_t>(date.dayOfWeek()) - 1]) + ", " +
         std::to_string(date.day()) + ' ' + capital(kMonths[static_cast<std::size_t>(date.month()) - 1]) +
         ' ' + std::to_string(date.year());
}

std::string timeText(QTime time) {
  const int hour = (time.hour() + 11) % 12 + 1;
  return std::to_string(hour) + (time.minute() < 10 ? ":0" : ":") + std::to_string(time.minute()) +
         (time.hour() < 12 ? " AM" : " PM");
}

}  // namespace velmora
