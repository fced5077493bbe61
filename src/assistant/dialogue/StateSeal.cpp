// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/dialogue/StateSeal.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "foundation/File.h"
#include "foundation/FileLock.h"

namespace velmora {
namespace {

// A sealed state: version, time of sealing (seconds since 1970, 8 bytes, the highest first), nonce, cipher
// text, tag. Version and time are authenticated with the rest.
constexpr char kVersion = 1;
constexpr std::size_t kHeader = 1 + 8;
constexpr std::size_t kNonce = 12;
constexpr std::size_t kTag = 16;
static_assert(StateSeal::kOverhead == kHeader + kNonce + kTag);

struct Release {
  void operator()(EVP_CIPHER_CTX *context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, Release>;

const unsigned char *bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}
unsigned char *bytesOf(std::string &text) { return reinterpret_cast<unsigned char *>(text.data()); }

std::string headerAt(StateSeal::Time now) {
  std::string header(1, kVersion);
  const auto seconds = static_cast<std::uint64_t>(now.time_since_epoch().count());
  for (int shift = 56; shift >= 0; shift -= 8) header += static_cast<char>(seconds >> shift & 0xff);
  return header;
}

StateSeal::Time timeIn(std::string_view header) {
  std::uint64_t seconds = 0;
  for (const char c : header.substr(1)) seconds = seconds << 8 | static_cast<unsigned char>(c);
  return StateSeal::Time(std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

}  // namespace

StateSeal::Key StateSeal::randomKey() {
  Key key;
  if (RAND_bytes(key.data(), static_cast<int>(key.size())) != 1)
    throw std::runtime_error("There are no random numbers");
  return key;
}

StateSeal::Key StateSeal::keyIn(const std::filesystem::path &path) {
  Key key;
  const FileLock lock(path);  // of two services that start at once the second takes the key of the first
  if (std::filesystem::exists(path)) {
    const std::string held = readFile(path);
    if (held.size() == key.size()) {
      std::copy(held.begin(), held.end(), key.begin());
      return key;
    }
  }
  key = randomKey();
  writeFile(path, {reinterpret_cast<const char *>(key.data()), key.size()}, 0600);
  return key;
}

std::string StateSeal::seal(std::string_view text, Time now) const {
  if (text.size() + kOverhead > kLargest) throw std::length_error("The conversation's state is too large");
  std::string sealed = headerAt(now);
  sealed.resize(kHeader + kNonce + text.size() + kTag);
  unsigned char *const header = bytesOf(sealed);
  unsigned char *const nonce = header + kHeader;
  unsigned char *const cipher = nonce + kNonce;
  const Context context(EVP_CIPHER_CTX_new());
  int length = 0;
  const bool done =
      context && RAND_bytes(nonce, kNonce) == 1 &&
      EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, m_key.data(), nonce) == 1 &&
      EVP_EncryptUpdate(context.get(), nullptr, &length, header, kHeader) == 1 &&
      EVP_EncryptUpdate(context.get(), cipher, &length, bytesOf(text), static_cast<int>(text.size())) == 1 &&
      EVP_EncryptFinal_ex(context.get(), cipher + length, &length) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, kTag, cipher + text.size()) == 1;
  if (!done) throw std::runtime_error("The conversation's state cannot be sealed");
  return sealed;
}

std::optional<std::string> StateSeal::open(std::string_view sealed, Time now) const {
  if (sealed.size() < kOverhead || sealed.size() > kLargest || sealed.front() != kVersion)
    return std::nullopt;
  std::string text(sealed.size() - kOverhead, '\0');
  std::string tag(sealed.substr(sealed.size() - kTag));
  const unsigned char *const nonce = bytesOf(sealed) + kHeader;
  const Context context(EVP_CIPHER_CTX_new());
  int length = 0;
  const bool genuine =
      context && EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, m_key.data(), nonce) == 1 &&
      EVP_DecryptUpdate(context.get(), nullptr, &length, bytesOf(sealed), kHeader) == 1 &&
      EVP_DecryptUpdate(context.get(), bytesOf(text), &length, nonce + kNonce,
                        static_cast<int>(text.size())) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, kTag, tag.data()) == 1 &&
      EVP_DecryptFinal_ex(context.get(), bytesOf(text) + length, &length) == 1;
  if (!genuine) return std::nullopt;
  const Time then = timeIn(sealed.substr(0, kHeader));
  if (then - now > kClockSteps || now - then > kLifetime) return std::nullopt;
  return text;
}

}  // namespace velmora
