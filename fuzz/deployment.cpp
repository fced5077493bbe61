// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The files of a deployment: its description, the client description, and what they make of addresses.
#include "foundation/Deployment.h"
#include "auth/Authenticator.h"
#include "foundation/Endpoint.h"
#include "fuzz/Input.h"
#include "fuzz/Setup.h"
#include "tests/support/TemporaryFolder.h"

namespace velmora {
namespace {

void load(const tests::TemporaryFolder &folder) {
  try {
    const auto deployment = Deployment::load(folder.path());
    fuzz::require(!deployment.host.empty(), "a deployment names a host");
    const auto endpoint = Endpoint::parse(deployment.address());
    fuzz::require(endpoint && endpoint->host == deployment.host && endpoint->port == deployment.port,
                  "the address of a deployment can be read");
    for (const std::string &link : {deployment.links.forum, deployment.links.fanPage,
                                    deployment.links.microblog, deployment.links.home}) {
      fuzz::require(link.empty() || link.starts_with("http://") || link.starts_with("https://"),
                    "a link is a page");
    }
    UserDefaults defaults;
    const Authenticator account(deployment, defaults);
    (void)account.loginUrl();
  } catch (const DeploymentError &error) {
    fuzz::require(*error.what() != '\0', "an error says what is wrong");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static const tests::TemporaryFolder folder;
  fuzz::Input input(data, size);
  const std::string endpoint = input.piece();
  if (const auto read = Endpoint::parse(endpoint)) {
    fuzz::require(Endpoint::parse(read->address()) == read, "an address can be read back");
    (void)read->isLiteral();
    (void)read->isLoopback();
  }
  (void)folder.write("google_oauth2.json", input.piece());
  (void)folder.write("deployment.json", input.rest());
  load(folder);
  return 0;
}

}  // namespace velmora
