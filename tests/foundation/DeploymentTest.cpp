// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Deployment.h"

#include <gmock/gmock.h>

#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using tests::TemporaryFolder;

TEST(Deployment, SaysWhichFileIsWrongAndHow) {
  const std::pair<const char *, const char *> cases[] = {
      {nullptr, "is no deployment folder: "},
      {"[]", "not a JSON object"},
      {R"({"host": "h:443"})", "without a port"},
      {R"({"host": 7})", "\"host\" must be a text"},
      {R"({"host": "h", "port": 65536})", "1 to 65535"},
      {R"({"host": "h", "links": 1})", "a JSON object"},
      {R"({"host": "h", "links": {"home": "file:///"}})", "with https:// or http://"}};
  const TemporaryFolder folder;
  const std::string file = folder.path() / "deployment.json";
  for (const auto &[contents, says] : cases) {
    if (contents) (void)folder.write("deployment.json", contents);
    EXPECT_THAT(
        [&] { (void)Deployment::load(folder.path()); },
        ::testing::ThrowsMessage<DeploymentError>(::testing::AllOf(HasSubstr(file), HasSubstr(says))));
  }
}

}  // namespace
}  // namespace velmora
