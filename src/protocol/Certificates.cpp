// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/Certificates.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "foundation/File.h"

namespace velmora {
namespace {

// The clock may still be set back a little after the start. Nothing renews a certificate while the assistant
// runs, and a desktop session lasts for months; what limits the damage of a stolen key is that it is good for
// this machine's loopback only, and that the next start trusts another authority.
constexpr long kValidBefore = -5L * 60;
constexpr long kValidAfter = 365L * 24 * 60 * 60;

struct Release {
  void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
  void operator()(X509 *certificate) const { X509_free(certificate); }
  void operator()(X509_EXTENSION *extension) const { X509_EXTENSION_free(extension); }
  void operator()(BIO *bio) const { BIO_free_all(bio); }
};
template <typename Type>
using Owned = std::unique_ptr<Type, Release>;

[[noreturn]] void fail(const char *what) {
  const unsigned long code = ERR_get_error();
  ERR_clear_error();
  char reason[256] = "no reason given";
  if (code != 0) ERR_error_string_n(code, reason, sizeof reason);
  throw std::runtime_error(std::string("Cannot make the certificates: ") + what + ": " + reason);
}

void check(bool worked, const char *what) {
  if (!worked) fail(what);
}

Owned<EVP_PKEY> makeKey() {
  Owned<EVP_PKEY> key(EVP_EC_gen("P-256"));
  check(key != nullptr, "key");
  return key;
}

void addExtension(X509 *certificate, X509 *issuer, int kind, const char *value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const Owned<X509_EXTENSION> extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
  check(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

/// A certificate of `key` with everything but extensions and signature; its own issuer when `issuer` is null.
Owned<X509> makeCertificate(EVP_PKEY *key, const char *name, const X509 *issuer) {
  Owned<X509> certificate(X509_new());
  check(certificate != nullptr, "certificate");
  // A random serial number of 127 positive bits: a client may remember those of earlier starts.
  unsigned char serial[16];
  check(RAND_bytes(serial, sizeof serial) == 1, "serial number");
  serial[0] = static_cast<unsigned char>((serial[0] & 0x7F) | 0x40);
  const std::unique_ptr<BIGNUM, decltype(&BN_free)> number(BN_bin2bn(serial, sizeof serial, nullptr),
                                                           BN_free);
  check(number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate.get())),
        "serial number");

  X509_NAME *const subject = X509_get_subject_name(certificate.get());
  check(X509_set_version(certificate.get(), X509_VERSION_3) == 1 &&
            X509_gmtime_adj(X509_getm_notBefore(certificate.get()), kValidBefore) &&
            X509_gmtime_adj(X509_getm_notAfter(certificate.get()), kValidAfter) &&
            X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char *>(name), -1, -1, 0) == 1 &&
            X509_set_issuer_name(certificate.get(), issuer ? X509_get_subject_name(issuer) : subject) == 1 &&
            X509_set_pubkey(certificate.get(), key) == 1,
        "certificate");
  return certificate;
}

void sign(X509 *certificate, EVP_PKEY *key) {
  check(X509_sign(certificate, key, EVP_sha256()) > 0, "signature");
}

Owned<X509> makeAuthority(EVP_PKEY *key) {
  Owned<X509> authority = makeCertificate(key, "Velmora local assistant authority", nullptr);
  addExtension(authority.get(), authority.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0");
  addExtension(authority.get(), authority.get(), NID_key_usage, "critical,keyCertSign");
  addExtension(authority.get(), authority.get(), NID_subject_key_identifier, "hash");
  sign(authority.get(), key);
  return authority;
}

Owned<X509> makeServer(EVP_PKEY *key, X509 *authority, EVP_PKEY *authorityKey) {
  Owned<X509> server = makeCertificate(key, "localhost", authority);
  addExtension(server.get(), authority, NID_basic_constraints, "critical,CA:FALSE");
  addExtension(server.get(), authority, NID_key_usage, "critical,digitalSignature");
  addExtension(server.get(), authority, NID_ext_key_usage, "serverAuth");
  addExtension(server.get(), authority, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
  addExtension(server.get(), authority, NID_subject_key_identifier, "hash");
  addExtension(server.get(), authority, NID_authority_key_identifier, "keyid:always");
  sign(server.get(), authorityKey);
  return server;
}

template <typename Write>
std::string pem(Write write) {
  const Owned<BIO> memory(BIO_new(BIO_s_mem()));
  check(memory && write(memory.get()) == 1, "PEM");
  char *data = nullptr;
  const long size = BIO_get_mem_data(memory.get(), &data);
  return {data, static_cast<std::size_t>(size)};
}

std::string pem(X509 *certificate) {
  return pem([=](BIO *out) { return PEM_write_bio_X509(out, certificate); });
}

void writePrivately(const std::filesystem::path &path, const std::string &contents) {
  try {
    writeFile(path, contents, 0600);
  } catch (const std::runtime_error &error) {
    throw std::runtime_error(std::string("Cannot write the certificates: ") + error.what());
  }
}

}  // namespace

Certificates makeCertificates(const std::filesystem::path &folder) {
  Certificates files{
      .roots = folder / "roots.pem", .chain = folder / "server.pem", .key = folder / "server.key"};
  const Owned<EVP_PKEY> authorityKey = makeKey();
  const Owned<X509> authority = makeAuthority(authorityKey.get());
  const Owned<EVP_PKEY> serverKey = makeKey();
  const Owned<X509> server = makeServer(serverKey.get(), authority.get(), authorityKey.get());

  writePrivately(files.key, pem([&](BIO *out) {
                   return PEM_write_bio_PrivateKey(out, serverKey.get(), nullptr, nullptr, 0, nullptr,
                                                   nullptr);
                 }));
  writePrivately(files.chain, pem(server.get()) + pem(authority.get()));
  writePrivately(files.roots, pem(authority.get()));
  return files;
}

}  // namespace velmora
