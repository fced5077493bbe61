// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// From one unit of measure to another.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <span>
#include <string_view>

#include "assistant/skills/Tables.h"
#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

enum class Dimension { length, mass, volume, time, speed, area, temperature };

/// A value in the dimension's base unit is `value * factor + offset`.
struct Unit {
  std::string_view one;
  std::string_view many;
  Dimension dimension;
  double factor;
  double offset = 0;
};

constexpr Unit kUnits[]{
    {"millimeter", "millimeters", Dimension::length, 0.001},
    {"centimeter", "centimeters", Dimension::length, 0.01},
    {"meter", "meters", Dimension::length, 1},
    {"kilometer", "kilometers", Dimension::length, 1000},
    {"inch", "inches", Dimension::length, 0.0254},
    {"foot", "feet", Dimension::length, 0.3048},
    {"yard", "yards", Dimension::length, 0.9144},
    {"mile", "miles", Dimension::length, 1609.344},
    {"gram", "grams", Dimension::mass, 0.001},
    {"kilogram", "kilograms", Dimension::mass, 1},
    {"kilo", "kilos", Dimension::mass, 1},
    {"ounce", "ounces", Dimension::mass, 0.028349523125},
    {"pound", "pounds", Dimension::mass, 0.45359237},
    {"ton", "tons", Dimension::mass, 1000},
    {"milliliter", "milliliters", Dimension::volume, 0.001},
    {"liter", "liters", Dimension::volume, 1},
    {"teaspoon", "teaspoons", Dimension::volume, 0.00492892159375},
    {"tablespoon", "tablespoons", Dimension::volume, 0.01478676478125},
    {"cup", "cups", Dimension::volume, 0.2365882365},
    {"pint", "pints", Dimension::volume, 0.473176473},
    {"quart", "quarts", Dimension::volume, 0.946352946},
    {"gallon", "gallons", Dimension::volume, 3.785411784},
    {"second", "seconds", Dimension::time, 1},
    {"minute", "minutes", Dimension::time, 60},
    {"hour", "hours", Dimension::time, 3600},
    {"day", "days", Dimension::time, 86400},
    {"week", "weeks", Dimension::time, 604800},
    {"kilometer per hour", "kilometers per hour", Dimension::speed, 1 / 3.6},
    {"mile per hour", "miles per hour", Dimension::speed, 0.44704},
    {"knot", "knots", Dimension::speed, 1852.0 / 3600},
    {"acre", "acres", Dimension::area, 4046.8564224},
    {"hectare", "hectares", Dimension::area, 10000},
    {"square meter", "square meters", Dimension::area, 1},
    {"square foot", "square feet", Dimension::area, 0.09290304},
    {"degree celsius", "degrees celsius", Dimension::temperature, 1},
    {"celsius", "celsius", Dimension::temperature, 1},
    {"degree fahrenheit", "degrees fahrenheit", Dimension::temperature, 5.0 / 9, -160.0 / 9},
    {"fahrenheit", "fahrenheit", Dimension::temperature, 5.0 / 9, -160.0 / 9},
    {"kelvin", "kelvin", Dimension::temperature, 1, -273.15},
};

std::string unitPhrase() {
  std::string phrase;
  for (const Unit &unit : kUnits) {
    (phrase += phrase.empty() ? "" : " | ") += unit.one;
    if (unit.many != unit.one) (phrase += " | ") += unit.many;
  }
  return phrase;
}

const Unit &unitOf(const std::string &words) {
  return *std::find_if(std::begin(kUnits), std::end(kUnits),
                       [&](const Unit &unit) { return unit.one == words || unit.many == words; });
}

/// "25 °C", "6.2 miles".
std::string measure(double value, const Unit &unit) {
  // Small results keep three figures.
  const double magnitude = std::abs(value);
  const int places = magnitude == 0 || magnitude >= 1
                         ? 2
                         : std::min(9, 2 - static_cast<int>(std::floor(std::log10(magnitude))));
  std::string text = numberText(value, places);
  if (unit.dimension == Dimension::temperature && unit.one.ends_with("celsius")) return text + "° Celsius";
  if (unit.dimension == Dimension::temperature && unit.one.ends_with("fahrenheit"))
    return text + "° Fahrenheit";
  return text + ' ' + std::string(text == "1" ? unit.one : unit.many);
}

Answer conversion(double value, const Unit &from, const Unit &to) {
  if (from.dimension != to.dimension) {
    std::string text = std::string(from.many) + " cannot be converted to " + std::string(to.many) + '.';
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return {text};
  }
  const double result = (value * from.factor + from.offset - to.offset) / to.factor;
  const std::string left = measure(value, from);
  const std::string right = measure(result, to);
  const bool exact =
      std::abs(result - std::round(result * 100) / 100) < 1e-9 * std::max(1.0, std::abs(result));
  return {left + (exact ? " = " : " ≈ ") + right + '.'};
}

Answer convert(const Request &request) {
  const auto value = decimalFromWords(request.slot("quantity")).value_or(1);
  return conversion(value, unitOf(request.slot("unit", 0)), unitOf(request.slot("unit", 1)));
}

/// "how many feet are in two miles": what is asked for comes first.
Answer howMany(const Request &request) {
  const auto value = decimalFromWords(request.slot("quantity")).value_or(1);
  return conversion(value, unitOf(request.slot("unit", 1)), unitOf(request.slot("unit", 0)));
}

/// Nobody asks for miles in pounds.
bool isOfOneDimension(const Match &words) {
  return unitOf(words.slot("unit", 0)).dimension == unitOf(words.slot("unit", 1)).dimension;
}

}  // namespace

SkillTable conversionSkills() {
  return {
      .rules = {{"unit", unitPhrase(), true}},
      .skills =
          {
              {"conversion",
               "[convert | change | turn | <what_is> | how much (is | are) | what are | calculate | "
               "tell me | how (long | far | heavy | hot | cold | warm | fast | tall | big) (is | are)] "
               "<quantity> <unit> (in | into | to) <unit>",
               convert,
               {"convert ten miles to kilometers", "what is thirty degrees celsius in fahrenheit"},
               isOfOneDimension},
              {"conversion",
               "[tell me | do you know] how many <unit> (are in | are there in | is | are | make | "
               "make up | in | equal | does | do | is in | go into | to | fit in | will | would) "
               "<quantity> <unit> [have | be | equal | make | contain]",
               howMany,
               {"how many feet are in a mile"},
               isOfOneDimension},
          },
  };
}

}  // namespace velmora
