// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/JsonValue.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(JsonValueTest, ReadsWhatIsThereAndNothingElse) {
  const struct {
    const char *text;
    std::optional<std::int64_t> integer;
    std::optional<QString> string;
  } cases[] = {{"3600.0", 3600, {}},
               {"3600.5", {}, {}},
               {"9223372036854775807", INT64_MAX, {}},
               {"9223372036854775808", {}, {}},
               {"-1e300", {}, {}},
               {"\"\\u00fc\"", {}, QStringLiteral("\u00fc")},
               {"null", {}, {}},
               {"[3600]", {}, {}}};
  for (const auto &c : cases) {
    const auto object = JsonValue::parse(std::string("{\"m\": [0, ") + c.text + "]}");
    ASSERT_TRUE(object) << c.text;
    const JsonValue value = (*object)["m"][1];
    EXPECT_EQ(value.integer(), c.integer) << c.text;
    EXPECT_EQ(value.string(), c.string) << c.text;
    EXPECT_EQ(value.isNull(), std::string_view(c.text) == "null") << c.text;
    for (const JsonValue &empty : {(*object)["n"], (*object)[0], (*object)["m"][2], value["m"]["m"][9]}) {
      EXPECT_FALSE(empty.isNull() || empty.integer() || empty.string()) << c.text;
    }
  }
  for (const char *text : {"", "nul", "{} {}", "<html>", "\"\xff\""}) {
    EXPECT_FALSE(JsonValue::parse(text)) << text;
  }
  // Whatever a server sends must not exhaust the stack.
  const std::size_t depth = 1 << 19;
  EXPECT_TRUE(JsonValue::parse(std::string(depth, '[') + std::string(depth, ']')));
}

}  // namespace
}  // namespace velmora
