// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/Secret.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <QByteArray>
#include <array>
#include <stdexcept>

namespace velmora {
namespace {

constexpr std::size_t kBytes = 32;
using Bytes = std::array<unsigned char, kBytes>;

// Keeps this use of a secret apart from any other that may come.
constexpr std::string_view kDerivation = "velmora access token 1";

QByteArray raw(const Bytes &bytes) {
  return QByteArray::fromRawData(reinterpret_cast<const char *>(bytes.data()), kBytes);
}

std::string inBase64Url(const Bytes &bytes) {
  return raw(bytes).toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals).toStdString();
}

Bytes sha256(std::string_view text) {
  Bytes digest;
  unsigned int size = 0;
  if (EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1 ||
      size != kBytes) {
    throw std::runtime_error("SHA-256 is not available");
  }
  return digest;
}

}  // namespace

std::string newSecret() {
  Bytes bytes;
  if (RAND_bytes(bytes.data(), kBytes) != 1) throw std::runtime_error("there is no randomness for a secret");
  return inBase64Url(bytes);
}

std::string secretDerivedFrom(std::string_view secret) {
  Bytes bytes;
  unsigned int size = 0;
  if (!HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
            reinterpret_cast<const unsigned char *>(kDerivation.data()), kDerivation.size(), bytes.data(),
            &size) ||
      size != kBytes) {
    throw std::runtime_error("HMAC-SHA-256 is not available");
  }
  return inBase64Url(bytes);
}

std::string digestOf(std::string_view text) { return raw(sha256(text)).toHex().toStdString(); }

std::string base64DigestOf(std::string_view text) { return raw(sha256(text)).toBase64().toStdString(); }

bool matchesDigest(std::string_view secret, std::string_view digest) {
  const std::string own = digestOf(secret);
  return own.size() == digest.size() && CRYPTO_memcmp(own.data(), digest.data(), own.size()) == 0;
}

}  // namespace velmora
