// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/JsonValue.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(JsonValueTest, ReadsWhatIsThereAndNothingElse) {
  struct Case {
    const char *text;
    std::optional<std::int64_t> integer;
    std::optional<QString> string;
  };
  const Case cases[] = {
      {"3600", 3600, {}},
      {"-1", -1, {}},
      {"3600.0", 3600, {}},
      {"3600.5", {}, {}},
      {"9223372036854775807", INT64_MAX, {}},
      {"9223372036854775808", {}, {}},
      {"1e300", {}, {}},
      {"-1e300", {}, {}},
      {"\"3600\"", {}, QStringLiteral("3600")},
      {"\"\"", {}, QStringLiteral("")},
      {"\"\\u00fc\"", {}, QStringLiteral("\u00fc")},
      {"true", {}, {}},
      {"null", {}, {}},
      {"[3600]", {}, {}},
      {"{}", {}, {}},
  };
  for (const Case &c : cases) {
    const auto list = JsonValue::parse(std::string("[0, ") + c.text + "]");
    const auto object = JsonValue::parse(std::string("{\"m\": ") + c.text + "}");
    ASSERT_TRUE(list && object) << c.text;
    for (const JsonValue &value : {(*list)[1], (*object)["m"]}) {
      EXPECT_EQ(value.integer(), c.integer) << c.text;
      EXPECT_EQ(value.string(), c.string) << c.text;
      EXPECT_EQ(value.isNull(), std::string_view(c.text) == "null") << c.text;
    }
    for (const JsonValue &empty : {(*list)[2], (*list)["m"], (*object)[0], (*object)["m"]["m"]["m"][9]}) {
      EXPECT_FALSE(empty.isNull() || empty.integer() || empty.string()) << c.text;
    }
  }
}

TEST(JsonValueTest, ATopLevelNullIsJsonAndRubbishIsNot) {
  const auto null = JsonValue::parse(" null\n");
  ASSERT_TRUE(null);
  EXPECT_TRUE(null->isNull());
  for (const char *text : {"", "nul", "{", "{} {}", "<html>", "\"\xff\""}) {
    EXPECT_FALSE(JsonValue::parse(text)) << text;
  }
  // Whatever a server sends must not exhaust the stack.
  const std::size_t depth = 1 << 19;
  EXPECT_TRUE(JsonValue::parse(std::string(depth, '[') + std::string(depth, ']')));
}

}  // namespace
}  // namespace velmora
