// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The time, here and elsewhere.
#include <QTimeZone>
#include <algorithm>
#include <string_view>

#include "assistant/dialogue/Vocabulary.h"
#include "assistant/skills/Tables.h"

namespace velmora {
namespace {

struct Place {
  std::string_view said;
  std::string_view shown;
  const char *zone;
};

constexpr Place kPlaces[]{
    {"amsterdam", "Amsterdam", "Europe/Amsterdam"},
    {"anchorage", "Anchorage", "America/Anchorage"},
    {"athens", "Athens", "Europe/Athens"},
    {"auckland", "Auckland", "Pacific/Auckland"},
    {"bangkok", "Bangkok", "Asia/Bangkok"},
    {"beijing", "Beijing", "Asia/Shanghai"},
    {"berlin", "Berlin", "Europe/Berlin"},
    {"boston", "Boston", "America/New_York"},
    {"brussels", "Brussels", "Europe/Brussels"},
    {"budapest", "Budapest", "Europe/Budapest"},
    {"buenos aires", "Buenos Aires", "America/Argentina/Buenos_Aires"},
    {"cairo", "Cairo", "Africa/Cairo"},
    {"california", "California", "America/Los_Angeles"},
    {"chicago", "Chicago", "America/Chicago"},
    {"china", "China", "Asia/Shanghai"},
    {"copenhagen", "Copenhagen", "Europe/Copenhagen"},
    {"dallas", "Dallas", "America/Chicago"},
    {"delhi", "Delhi", "Asia/Kolkata"},
    {"denver", "Denver", "America/Denver"},
    {"dubai", "Dubai", "Asia/Dubai"},
    {"dublin", "Dublin", "Europe/Dublin"},
    {"england", "England", "Europe/London"},
    {"france", "France", "Europe/Paris"},
    {"geneva", "Geneva", "Europe/Zurich"},
    {"germany", "Germany", "Europe/Berlin"},
    {"helsinki", "Helsinki", "Europe/Helsinki"},
    {"hong kong", "Hong Kong", "Asia/Hong_Kong"},
    {"honolulu", "Honolulu", "Pacific/Honolulu"},
    {"india", "India", "Asia/Kolkata"},
    {"istanbul", "Istanbul", "Europe/Istanbul"},
    {"italy", "Italy", "Europe/Rome"},
    {"jakarta", "Jakarta", "Asia/Jakarta"},
    {"japan", "Japan", "Asia/Tokyo"},
    {"johannesburg", "Johannesburg", "Africa/Johannesburg"},
    {"lisbon", "Lisbon", "Europe/Lisbon"},
    {"london", "London", "Europe/London"},
    {"los angeles", "Los Angeles", "America/Los_Angeles"},
    {"madrid", "Madrid", "Europe/Madrid"},
    {"manila", "Manila", "Asia/Manila"},
    {"melbourne", "Melbourne", "Australia/Melbourne"},
    {"mexico city", "Mexico City", "America/Mexico_City"},
    {"miami", "Miami", "America/New_York"},
    {"montreal", "Montreal", "America/Toronto"},
    {"moscow", "Moscow", "Europe/Moscow"},
    {"mumbai", "Mumbai", "Asia/Kolkata"},
    {"nairobi", "Nairobi", "Africa/Nairobi"},
    {"new york", "New York", "America/New_York"},
    {"oslo", "Oslo", "Europe/Oslo"},
    {"paris", "Paris", "Europe/Paris"},
    {"prague", "Prague", "Europe/Prague"},
    {"rio", "Rio", "America/Sao_Paulo"},
    {"rome", "Rome", "Europe/Rome"},
    {"san francisco", "San Francisco", "America/Los_Angeles"},
    {"santiago", "Santiago", "America/Santiago"},
    {"seattle", "Seattle", "America/Los_Angeles"},
    {"seoul", "Seoul", "Asia/Seoul"},
    {"shanghai", "Shanghai", "Asia/Shanghai"},
    {"singapore", "Singapore", "Asia/Singapore"},
    {"spain", "Spain", "Europe/Madrid"},
    {"stockholm", "Stockholm", "Europe/Stockholm"},
    {"sydney", "Sydney", "Australia/Sydney"},
    {"texas", "Texas", "America/Chicago"},
    {"tokyo", "Tokyo", "Asia/Tokyo"},
    {"toronto", "Toronto", "America/Toronto"},
    {"vancouver", "Vancouver", "America/Vancouver"},
    {"vienna", "Vienna", "Europe/Vienna"},
    {"warsaw", "Warsaw", "Europe/Warsaw"},
    {"washington", "Washington", "America/New_York"},
    {"zurich", "Zurich", "Europe/Zurich"},
};

/// Said before the word "time".
constexpr Place kZones[]{
    {"pacific", "Pacific time", "America/Los_Angeles"},
    {"mountain", "Mountain time", "America/Denver"},
    {"central", "Central time", "America/Chicago"},
    {"eastern", "Eastern time", "America/New_York"},
    {"greenwich", "Greenwich time", "UTC"},
    {"universal", "Universal time", "UTC"},
    {"japanese", "Japanese time", "Asia/Tokyo"},
    {"indian", "Indian time", "Asia/Kolkata"},
};

std::string alternatives(std::span<const Place> places) {
  std::string phrase;
  for (const Place &place : places) (phrase += phrase.empty() ? "" : " | ") += place.said;
  return phrase;
}

Answer tellTime(const Request &request) {
  return {"It is " + timeText(request.services.clock().time()) + '.'};
}

Answer tellTimeAt(const Request &request, std::span<const Place> places, const std::string &said,
                  std::string_view preposition) {
  const auto place =
      std::find_if(places.begin(), places.end(), [&](const Place &p) { return p.said == said; });
  const QTimeZone zone(place->zone);
  if (!zone.isValid())
    return {"I do not know the time zone of " + std::string(place->shown) + " on this machine."};
  const QDateTime here = request.services.clock();
  const QDateTime there = here.toTimeZone(zone);
  std::string text = "It is " + timeText(there.time());
  if (there.date() > here.date()) text += " tomorrow";
  if (there.date() < here.date()) text += " yesterday";
  return {(text += preposition) += std::string(place->shown) + '.'};
}

Answer tellNoTimeBeyond(const Request &) { return {"I only know what time it is on earth."}; }

Answer tellTimeInCity(const Request &request) {
  return tellTimeAt(request, kPlaces, request.slot("city"), " in ");
}

Answer tellTimeInZone(const Request &request) {
  return tellTimeAt(request, kZones, request.slot("zone"), ", ");
}

}  // namespace

SkillTable timeSkills() {
  return {
      .rules = {{"city", alternatives(kPlaces), true}, {"zone", alternatives(kZones), true}},
      .skills =
          {
              {"time",
               "(what time | what hour) is it [here] [<now>] | <what_is> the [current | exact] time "
               "[<now>] | (<ask> | say | check | show me) the [current | exact] time [<now>] | (<ask> "
               "| say) what time it is [<now>] | (do you have | have you got) the time | what time do "
               "(we | you) have | how late is it [<now>] | [the] current time",
               tellTime,
               {"what time is it", "tell me the time"}},
              {"time in a city",
               "(what time is it [<now>] | <what_is> the [current | local] time [<now>] | (<ask> | "
               "check | show me) the [current | local] time | <ask> what time it is [<now>] | what "
               "time do (they | we) have | how late is it [<now>] | what time would it be | [the] "
               "[current | local] time) [over] in <city> [<now>] | <what_is> the [current] <city> time",
               tellTimeInCity,
               {"what time is it in tokyo", "tell me the time in new york"}},
              // Without it the recogniser would find the nearest city to it, by its sound.
              {"time beyond the earth",
               "(what time is it [<now>] | <what_is> the time [<now>]) on (mars | the moon | venus | jupiter "
               "| "
               "mercury | saturn)",
               tellNoTimeBeyond,
               {"what time is it on mars"}},
              {"time in a zone",
               "(what time is it [<now>] [in [the]] | <what_is> [the] [current] | <ask> [the] "
               "[current]) <zone> [standard | daylight] time [zone] [<now>]",
               tellTimeInZone,
               {"what is the pacific time", "what time is it in greenwich time"}},
          },
  };
}

}  // namespace velmora
