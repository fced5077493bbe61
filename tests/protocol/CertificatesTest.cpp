// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// That TLS accepts the certificates, and which names it refuses, is seen where calls are made with them.
#include "protocol/Certificates.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

TEST(Certificates, OnlyTheServersKeyIsWrittenAndOnlyForItsOwner) {
  const tests::TemporaryFolder folder;
  // A file of an earlier start that everybody may read.
  const auto old = folder.write("server.key", "old");
  ::chmod(old.c_str(), 0644);
  const Certificates files = makeCertificates(folder.path());
  struct stat status {};
  ASSERT_EQ(::stat(files.key.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  int count = 0;
  for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
    ++count;
    const std::string contents = readFile(entry.path());
    EXPECT_EQ(contents.find("PRIVATE KEY") != std::string::npos, entry.path() == files.key) << entry.path();
  }
  EXPECT_EQ(count, 3);
}

}  // namespace
}  // namespace velmora
