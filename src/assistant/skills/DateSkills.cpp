// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Dates, weekdays, and how long until.

#include <QTimeZone>

#include "assistant/dialogue/Vocabulary.h"
#include "assistant/skills/Tables.h"

namespace velmora {
namespace {

std::string counted(qint64 count, const char *thing) {
  return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

Answer noSuchDay(const std::string &said) { return {"There is no such day as " + said + '.'}; }

Answer tellDate(const Request &request) {
  return {"Today is " + dateText(request.services.clock().date()) + '.'};
}

Answer tellDay(const Request &request) {
  const QDate today = request.services.clock().date();
  const std::string said = request.slot("day");
  const auto day = dayFromWords(said, today, Which::nearest);
  if (!day) return noSuchDay(said);
  return {*day == today ? "That is today, " + dateText(*day) + '.'
                        : (*day < today ? "It was " : "It is ") + dateText(*day) + '.'};
}

Answer tellWhen(const Request &request) {
  const QDate today = request.services.clock().date();
  const auto day = dayFromWords(request.slot("day"), today, Which::next);
  if (!day) return noSuchDay(request.slot("day"));
  return {(*day < today ? "It was on " : "It is on ") + dateText(*day) + '.'};
}

Answer countDays(const Request &request) {
  const QDate today = request.services.clock().date();
  const std::string said = request.slot("day");
  const auto day = dayFromWords(said, today, Which::next);
  if (!day) return noSuchDay(said);
  const qint64 days = today.daysTo(*day);
  if (days == 0) return {"That is today."};
  if (days < 0) return {"That was " + counted(-days, "day") + " ago."};
  std::string text = "It is " + counted(days, "day") + " until " + dateText(*day);
  if (days >= 14) text += ", about " + counted((days + 3) / 7, "week");
  return {text + '.'};
}

Answer countHours(const Request &request) {
  const QDateTime now = request.services.clock();
  const auto clock = clockFromWords(request.slot("clock"), now.time());
  if (!clock) return {"I do not know that time of the day."};
  QDateTime then(now.date(), *clock, now.timeZone());
  if (then <= now) then = then.addDays(1);
  const qint64 minutes = (now.secsTo(then) + 59) / 60;
  std::string text = "It is ";
  if (minutes >= 60) text += counted(minutes / 60, "hour");
  if (minutes >= 60 && minutes % 60 != 0) text += " and ";
  if (minutes % 60 != 0) text += counted(minutes % 60, "minute");
  return {text + " until " + timeText(*clock) + '.'};
}

}  // namespace

SkillTable dateSkills() {
  return {
      .skills =
          {
              {"date",
               "(what | which) (day | date | day of the week | day of the month | weekday | month | "
               "year) (is it [today | <now>] | is today | do we have [today]) | <what_is> today | "
               "<what_is> (today's (date | day) | the [current] date [today] | the day [of the week] "
               "[today]) | (<ask> | say) (the [current] date [today] | today's date | what day it is "
               "[today]) | (<ask> | say) (what | which) (day | date | day of the week | weekday) (it "
               "is [today] | today is) | today's date",
               tellDate,
               {"what day is it", "what's today's date"}},
              {"day of a date",
               "((what | which) (day | date | day of the week | weekday) (is | was | will be | is it | "
               "was it | will it be | does | did | will | is it on) | on (what | which) (day | date | "
               "day of the week | weekday) (is | was | will be | does | did | will) | <what_is> the "
               "(date | day | day of the week | weekday) (of | on | for) | <ask> (what | which) (day | "
               "date | weekday) (is | was) | <ask> the (date | day | weekday) of) <day> [fall [on] | "
               "be | fall on this year | this year]",
               tellDay,
               {"what day is the third of may", "what date was last friday", "which day is tomorrow"}},
              {"day of a date",
               "((when is | when's | when was | when will | when does | when do we (have | celebrate) "
               "| <ask> when [is]) <day> [this year | is | be | fall | come | begin | start]) | <ask> "
               "what day <day> is",
               tellWhen,
               {"when is christmas"}},
              {"days until",
               "(how (long | many [more] days | many [more] weeks | much longer | far) [is it | it is "
               "| are there | do we have | do i have | is left | are left | left | are there left | "
               "have we got | to go | will it be] (until | till | to | before) | how (many days | far "
               "| long) away is | how soon is | [the] days (until | till)) <day> [is]",
               countDays,
               {"how long until christmas", "how many days until the tenth of june"}},
              {"hours until",
               "how (long | many [more] hours | many [more] minutes | much time | much longer) [is it "
               "| it is | are there | do i have | do we have | is left | are left | left | do i have "
               "left | do we have left | is there | is there left | to go | will it be] (until | till "
               "| to | before) <clock>",
               countHours,
               {"how long until noon", "how long is it until half past seven"}},
          },
  };
}

}  // namespace velmora
