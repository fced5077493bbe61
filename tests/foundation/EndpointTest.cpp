// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Endpoint.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Endpoint, ReadsHostsAndPorts) {
  const struct {
    std::string text;
    std::optional<Endpoint> endpoint;
    bool loopback = false;
  } cases[] = {{"a.example", Endpoint{"a.example", {}}},
               {"a.example:443", Endpoint{"a.example", 443}},
               {"localhost:65535", Endpoint{"localhost", 65535}, true},
               {"127.evil.example:1", Endpoint{"127.evil.example", 1}},
               {"[::1]:443", Endpoint{"::1", 443}, true},
               {"::1", Endpoint{"::1", {}}, true}};
  for (const auto &c : cases) {
    EXPECT_EQ(Endpoint::parse(c.text), c.endpoint) << c.text;
    EXPECT_EQ(c.endpoint && c.endpoint->isLoopback(), c.loopback) << c.text;
  }
  EXPECT_EQ((Endpoint{"::1", 443}).address(), "[::1]:443");
  for (const char *text : {"", ":443", "a:", "a:0", "a:65536", "a:443x", "https://a", "a b", "-a", "[::1",
                           "[::1]443", "[a]:443", "unix:/tmp/x", "1:2:3"})
    EXPECT_EQ(Endpoint::parse(text), std::nullopt) << text;
}

}  // namespace
}  // namespace velmora
