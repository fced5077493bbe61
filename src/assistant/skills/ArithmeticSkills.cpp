// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <map>
#include <utility>

#include "assistant/skills/Tables.h"
#include "assistant/speech/NumberWords.h"

namespace velmora {
namespace {

constexpr double kLargest = 1e15;  // beyond that a double no longer tells neighbours apart

double numberAt(const Request &request, std::size_t index, const char *rule = "decimal") {
  return decimalFromWords(request.slot(rule, index)).value_or(0);
}

/// "left = result", or how it nearly is.
Answer equation(const std::string &left, double result) {
  if (!std::isfinite(result)) return {"That cannot be calculated."};
  if (std::abs(result) >= kLargest) return {"The result is too large for me."};
  const double shown = std::round(result * 100) / 100;
  if (shown == 0 && result != 0) return {left + " is less than one hundredth."};
  const bool exact = std::abs(shown - result) < 1e-9 * std::max(1.0, std::abs(result));
  return {left + (exact ? " = " : " ≈ ") + numberText(result)};
}

struct Operation {
  const char *sign;
  int rank;  ///< those of higher rank are done first
  double (*apply)(double, double);
};

double add(double a, double b) { return a + b; }
double subtract(double a, double b) { return a - b; }
double multiply(double a, double b) { return a * b; }
double divide(double a, double b) { return b == 0 ? std::nan("") : a / b; }

const Operation &operationOf(const std::string &words) {
  static const std::map<std::string, Operation> operations{
      {"plus", {" + ", 1, add}},
      {"minus", {" − ", 1, subtract}},
      {"take away", {" − ", 1, subtract}},
      {"times", {" × ", 2, multiply}},
      {"multiplied by", {" × ", 2, multiply}},
      {"divided by", {" ÷ ", 2, divide}},
      {"over", {" ÷ ", 2, divide}},
  };
  return operations.at(words);
}

Answer calculate(const Request &request) {
  const auto operators = request.words.slotsOf("operator");
  std::string text = numberText(numberAt(request, 0), 6);
  // The sum of what is complete, and the product that may still grow.
  double sum = 0;
  double product = numberAt(request, 0);
  for (std::size_t i = 0; i < operators.size(); ++i) {
    const Operation &operation = operationOf(operators[i]);
    const double number = numberAt(request, i + 1);
    text += operation.sign + numberText(number, 6);
    if (operation.apply == divide && number == 0) return {"Nothing can be divided by zero."};
    if (operation.rank > 1) {
      product = operation.apply(product, number);
    } else {
      sum += product;
      product = operation.apply(0, number);
    }
  }
  return equation(text, sum + product);
}

/// "multiply sixteen by four", "take three from ten".
Answer calculateByVerb(const Request &request) {
  static const std::map<std::string, std::string> operators{{"add", "plus"},
                                                            {"subtract", "minus"},
                                                            {"take", "minus"},
                                                            {"multiply", "times"},
                                                            {"divide", "divided by"}};
  const Operation &operation = operationOf(operators.at(request.slot("verb")));
  const bool isSubtraction = operation.apply == subtract;
  const double left = numberAt(request, isSubtraction ? 1 : 0);
  const double right = numberAt(request, isSubtraction ? 0 : 1);
  if (operation.apply == divide && right == 0) return {"Nothing can be divided by zero."};
  return equation(numberText(left, 6) + operation.sign + numberText(right, 6), operation.apply(left, right));
}

/// "the sum of two and two", "the difference between seven and three".
Answer calculateByName(const Request &request) {
  static const std::map<std::string, std::string> operators{
      {"sum", "plus"}, {"difference", "minus"}, {"product", "times"}, {"quotient", "divided by"}};
  const Operation &operation = operationOf(operators.at(request.slot("result")));
  double left = numberAt(request, 0, "base");
  double right = numberAt(request, 1, "base");
  if (operation.apply == subtract && left < right) std::swap(left, right);
  if (operation.apply == divide && right == 0) return {"Nothing can be divided by zero."};
  return equation(numberText(left, 6) + operation.sign + numberText(right, 6), operation.apply(left, right));
}

Answer percentage(const Request &request) {
  const double percent = numberAt(request, 0, "percentage");
  const double whole = numberAt(request, 0);
  return equation(numberText(percent, 6) + "% of " + numberText(whole, 6), percent * whole / 100);
}

Answer power(const Request &request) {
  const double base = numberAt(request, 0, "base");
  const std::string exponent = request.slot("exponent");
  const auto nth = ordinalFromWords(request.slot("nth"));
  const double value = exponent == "squared" ? 2
                       : exponent == "cubed" ? 3
                       : nth                 ? *nth
                                             : numberAt(request, 1, "base");
  return equation(numberText(base, 6) + '^' + numberText(value, 6), std::pow(base, value));
}

Answer namedPower(const Request &request) {
  const double base = numberAt(request, 0, "base");
  const double value = request.slot("exponent_name") == "square" ? 2 : 3;
  return equation(numberText(base, 6) + '^' + numberText(value, 6), std::pow(base, value));
}

Answer root(const Request &request) {
  const double number = numberAt(request, 0, "base");
  if (request.slot("root_kind").starts_with("cub"))
    return equation("The cube root of " + numberText(number, 6), std::cbrt(number));
  if (number < 0) return {"A negative number has no real square root."};
  return equation("The square root of " + numberText(number, 6), std::sqrt(number));
}

Answer part(const Request &request) {
  static const std::map<std::string, double> shares{{"half of", 0.5},        {"half", 0.5},
                                                    {"a third of", 1.0 / 3}, {"a quarter of", 0.25},
                                                    {"double", 2},           {"twice", 2}};
  const std::string said = request.slot("share");
  std::string shown = said;
  shown[0] = static_cast<char>(shown[0] - 'a' + 'A');
  const double number = numberAt(request, 0, "base");
  return equation(shown + ' ' + numberText(number, 6), number * shares.at(said));
}

}  // namespace

SkillTable arithmeticSkills() {
  return {
      // The longer a number may be, the more the recogniser has to try.
      .rules = {{"percentage", "<below_hundred> [<fraction>] | (a | one) hundred", true},
                {"base", "[minus] (zero | <below_thousand>) [<fraction>] | a thousand", true},
                {"operator", "plus | minus | take away | times | multiplied by | divided by | over", true},
                {"exponent", "squared | cubed", true},
                {"nth", "second | third | fourth | fifth | sixth | seventh | eighth | ninth | tenth", true},
                {"result", "sum | difference | product | quotient", true},
                {"exponent_name", "square | cube", true},
                {"root_kind", "square | cube | cubic", true},
                {"verb", "add | subtract | take | multiply | divide", true},
                {"share", "half of | half | a third of | a quarter of | double | twice", true}},
      .skills =
          {
              {"arithmetic",
               "[<how_much_is> | (what | how much) (does | do)] <decimal> (<operator> <decimal>)+ [make | "
               "equal]",
               calculate,
               {"what is seven plus five", "what is twelve times eleven minus two",
                "how much is nine hundred divided by four"}},
              {"arithmetic",
               "<verb> <decimal> (by | from | to | and | with) <decimal>",
               calculateByVerb,
               {"multiply sixteen by four"}},
              {"arithmetic",
               "<how_much_is> the <result> (of | between) <base> and <base>",
               calculateByName,
               {"what is the sum of seven and five"}},
              {"percent",
               "[<how_much_is>] <percentage> percent (of | from) <decimal>",
               percentage,
               {"what is fifteen percent of two hundred"}},
              {"power",
               "[<how_much_is>] <base> (<exponent> | [raised] to the power [of] <base> | [raised] to "
               "the <nth> [power])",
               power,
               {"what is two to the power of ten", "what is nine squared"}},
              {"power",
               "<how_much_is> the <exponent_name> of <base>",
               namedPower,
               {"what is the square of nine"}},
              {"root",
               "[<how_much_is>] [the] [<root_kind>] root of <base>",
               root,
               {"what is the square root of two"}},
              {"share", "<how_much_is> <share> <base>", part, {"what is half of ninety"}},
          },
  };
}

}  // namespace velmora
