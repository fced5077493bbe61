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
               "(what | which) (day | date | day of the week | weekday) (is it [today | <now>] | is "
               "today | do we have [today]) | what is today | <what_is> (today's date | the [current] "
               "date [today] | the day [of the week] today | today's day) | (tell me | give me | say) "
               "(the [current] date | today's date | the date today) | (tell me | do you know) (what | "
               "which) (day | date | day of the week | weekday) it is [today]",
               tellDate,
               {"what day is it", "what's today's date"}},
              {"day of a date",
               "((what | which) (day | date | day of the week | weekday) (is | was | will be | is it | "
               "was it | will it be | does) | on (what | which) (day | date | day of the week | weekday) "
               "(is | was | will be | does | will) | <what_is> the (date | day | day of the week) (of | "
               "on | for)) <day> [fall [on] | be]",
               tellDay,
               {"what day is the third of may", "what date was last friday", "which day is tomorrow"}},
              {"day of a date",
               "(when is | when's | when was | when will | tell me when) <day> [this year | is | be]",
               tellWhen,
               {"when is christmas"}},
              {"days until",
               "how (long | many days | many weeks | far) [is it | are there | do we have | do i have | "
               "is left | are left | are there left | remain | have we got] (until | till | to | before "
               "| away is) <day>",
               countDays,
               {"how long until christmas", "how many days until the tenth of june"}},
              {"hours until",
               "how (long | many hours | many minutes | much time) [is it | are there | do i have | do "
               "we have | is left | are left | do i have left | is there | remain | to go] (until | till "
               "| before) <clock>",
               countHours,
               {"how long until noon", "how long is it until half past seven"}},
          },
  };
}

}  // namespace velmora
