// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/Certificates.h"

#include <gmock/gmock.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <fstream>
#include <memory>

#include "foundation/Deployment.h"
#include "support/TemporaryFolder.h"

namespace velmora {
namespace {

using tests::TemporaryFolder;

template <auto Free>
struct Releaser {
  void operator()(auto *object) const { Free(object); }
};
using Certificate = std::unique_ptr<X509, Releaser<X509_free>>;
using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using Bytes = std::unique_ptr<BIO, Releaser<BIO_free>>;

Bytes open(const std::filesystem::path &file) { return Bytes(BIO_new_file(file.c_str(), "r")); }

Certificate read(BIO *pem) { return Certificate(PEM_read_bio_X509(pem, nullptr, nullptr, nullptr)); }

/// What a client finds that trusts `roots` only and wants a server called `host`.
int verify(const Certificates &files, const std::filesystem::path &roots, const std::string &host,
           std::time_t when) {
  const Bytes chainFile = open(files.chain);
  const Certificate server = read(chainFile.get());
  const std::unique_ptr<X509_STORE, Releaser<X509_STORE_free>> store(X509_STORE_new());
  X509_STORE_load_file(store.get(), roots.c_str());
  const std::unique_ptr<X509_STORE_CTX, Releaser<X509_STORE_CTX_free>> context(X509_STORE_CTX_new());
  X509_STORE_CTX_init(context.get(), store.get(), server.get(), nullptr);
  X509_VERIFY_PARAM *const wanted = X509_STORE_CTX_get0_param(context.get());
  X509_VERIFY_PARAM_set_purpose(wanted, X509_PURPOSE_SSL_SERVER);
  X509_VERIFY_PARAM_set_flags(wanted, X509_V_FLAG_X509_STRICT);
  X509_VERIFY_PARAM_set_time(wanted, when);
  if (X509_VERIFY_PARAM_set1_ip_asc(wanted, host.c_str()) != 1) {
    X509_VERIFY_PARAM_set1_host(wanted, host.c_str(), 0);
  }
  X509_verify_cert(context.get());
  return X509_STORE_CTX_get_error(context.get());
}

TEST(Certificates, AreGoodForThisMachineAndNothingElse) {
  const TemporaryFolder folder;
  const TemporaryFolder otherFolder;
  const Certificates files = makeCertificates(folder.path());
  const Certificates other = makeCertificates(otherFolder.path());
  const std::time_t now = std::time(nullptr);
  const std::time_t day = 24 * 60 * 60;
  const struct {
    const char *host;
    std::filesystem::path roots;
    std::time_t when;
    int result;
  } cases[] = {{"localhost", files.roots, now, X509_V_OK},
               {"127.0.0.1", files.roots, now, X509_V_OK},
               {"127.0.0.1", files.roots, now - 4 * 60, X509_V_OK},
               {"127.0.0.1", files.roots, now + 300 * day, X509_V_OK},
               {"127.0.0.1", files.roots, now + 400 * day, X509_V_ERR_CERT_HAS_EXPIRED},
               {"127.0.0.1", files.roots, now - day, X509_V_ERR_CERT_NOT_YET_VALID},
               {"assistant.example", files.roots, now, X509_V_ERR_HOSTNAME_MISMATCH},
               {"127.0.0.2", files.roots, now, X509_V_ERR_IP_ADDRESS_MISMATCH},
               {"localhost", other.roots, now, X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY}};
  for (const auto &c : cases) {
    EXPECT_EQ(verify(files, c.roots, c.host, c.when), c.result)
        << c.host << ": " << X509_verify_cert_error_string(c.result);
  }
}

TEST(Certificates, TheKeysStayPrivate) {
  const TemporaryFolder folder;
  // A file of an earlier start that everybody may read.
  const auto old = folder.write("server.key", "old");
  ::chmod(old.c_str(), 0644);
  const Certificates files = makeCertificates(folder.path());
  EXPECT_EQ(files.key, old);
  struct stat status {};
  ASSERT_EQ(::stat(files.key.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);

  const Key key(PEM_read_bio_PrivateKey(open(files.key).get(), nullptr, nullptr, nullptr));
  const Bytes chain = open(files.chain);
  const Certificate server = read(chain.get());
  const Certificate authority = read(chain.get());
  ASSERT_TRUE(key && server && authority);
  EXPECT_EQ(X509_check_private_key(server.get(), key.get()), 1);
  EXPECT_EQ(X509_check_ca(authority.get()), 1);
  EXPECT_EQ(X509_check_ca(server.get()), 0);
  EXPECT_EQ(X509_cmp(authority.get(), read(open(files.roots).get()).get()), 0);

  // Nothing else was left in the folder, the authority's key least of all.
  int count = 0;
  for (const auto &entry : std::filesystem::directory_iterator(folder.path())) {
    ++count;
    const std::string contents = readFile(entry.path());
    EXPECT_EQ(contents.find("PRIVATE KEY") != std::string::npos, entry.path() == files.key) << entry.path();
  }
  EXPECT_EQ(count, 3);
}

TEST(Certificates, SaysWhereItCouldNotWrite) {
  const TemporaryFolder folder;
  const auto missing = folder.path() / "missing";
  try {
    (void)makeCertificates(missing);
    ADD_FAILURE();
  } catch (const std::runtime_error &error) {
    EXPECT_THAT(error.what(), ::testing::HasSubstr(missing.string()));
  }
}

}  // namespace
}  // namespace velmora
