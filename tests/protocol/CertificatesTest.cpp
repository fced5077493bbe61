// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// That TLS accepts the certificates, and which names it refuses, is seen where calls are made with them.
#include "protocol/Certificates.h"

#include <gtest/gtest.h>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

TEST(Certificates, OnlyTheServersKeyIsWrittenAndOnlyForItsOwner) {
  const tests::TemporaryFolder folder;
  // A file of an earlier start that everybody may read.
  (void)folder.write("server.key", "old");
  const Certificates files = makeCertificates(folder.path());
  EXPECT_EQ(fs::status(files.key).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  int count = 0;
  for (const auto &entry : fs::directory_iterator(folder.path())) {
    ++count;
    const bool holdsKey = readFile(entry.path()).find("PRIVATE KEY") != std::string::npos;
    EXPECT_EQ(holdsKey, entry.path() == files.key) << entry.path();
  }
  EXPECT_EQ(count, 3);
}

}  // namespace
}  // namespace velmora
