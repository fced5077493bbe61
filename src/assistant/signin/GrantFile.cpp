// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/GrantFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "foundation/File.h"

namespace velmora {
namespace {

using Json = nlohmann::json;

constexpr int kVersion = 1;
constexpr std::size_t kLongestFile = 256 * 1024;  // several times what the most grants need
constexpr std::size_t kDigestLength = 64;

Json toJson(const Grant &grant) {
  return {{"client", grant.clientId},       {"scope", grant.scope},
          {"code", grant.codeDigest},       {"access", grant.accessDigest},
          {"refresh", grant.refreshDigest}, {"access_expiry", grant.accessExpiry},
          {"last_use", grant.lastUse}};
}

std::string digestIn(const Json &object, const char *name) {
  auto digest = object.at(name).get<std::string>();
  if (digest.size() != kDigestLength || digest.find_first_not_of("0123456789abcdef") != std::string::npos) {
    throw std::runtime_error("no digest");
  }
  return digest;
}

/// Throws when `text` is not what `GrantFile` writes.
std::vector<Grant> parse(const std::string &text) {
  const Json json = Json::parse(text);
  if (json.at("version").get<int>() != kVersion) throw std::runtime_error("another version");
  std::vector<Grant> grants;
  for (const Json &entry : json.at("grants")) {
    grants.push_back({.clientId = entry.at("client").get<std::string>(),
                      .scope = entry.at("scope").get<std::string>(),
                      .codeDigest = digestIn(entry, "code"),
                      .accessDigest = digestIn(entry, "access"),
                      .refreshDigest = digestIn(entry, "refresh"),
                      .accessExpiry = entry.at("access_expiry").get<std::int64_t>(),
                      .lastUse = entry.at("last_use").get<std::int64_t>()});
  }
  return grants;
}

void keepNewest(std::vector<Grant> &grants) {
  if (grants.size() <= kMostGrants) return;
  std::stable_sort(grants.begin(), grants.end(),
                   [](const Grant &left, const Grant &right) { return left.lastUse > right.lastUse; });
  grants.resize(kMostGrants);
}

}  // namespace

/// Keeps other processes out; without the folder it holds nothing.
class GrantFile::Lock {
 public:
  explicit Lock(const std::filesystem::path &path) {
    if (path.empty()) return;
    m_descriptor = ::open((path.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    while (m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  ~Lock() {
    if (m_descriptor >= 0) ::close(m_descriptor);
  }
  Lock(const Lock &) = delete;
  Lock &operator=(const Lock &) = delete;

 private:
  int m_descriptor = -1;
};

GrantFile::GrantFile(std::filesystem::path path, Complaint complain)
    : m_path(std::move(path)), m_complain(std::move(complain)) {}

std::optional<GrantFile::Stamp> GrantFile::stamp() const {
  struct stat status {};
  if (m_path.empty()) return Stamp{};
  if (::stat(m_path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return Stamp{};
    return std::nullopt;
  }
  return Stamp{.inode = status.st_ino,
               .nanoseconds = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec,
               .size = status.st_size};
}

bool GrantFile::mayHaveChanged() const {
  const auto now = stamp();
  return !now || now != m_seen;
}

std::optional<std::vector<Grant>> GrantFile::readChanges() {
  if (!mayHaveChanged()) return std::nullopt;
  const Lock lock(m_path);
  return read();
}

std::optional<std::vector<Grant>> GrantFile::read() {
  const auto seen = stamp();
  std::string text;
  try {
    if (seen != Stamp{}) text = readFile(m_path);
  } catch (const std::exception &error) {
    // Perhaps only for now, and what stands in it may be good: it is neither moved nor replaced.
    m_seen.reset();
    if (std::exchange(m_lastReason, error.what()) != error.what())
      m_complain(std::string("the sign-ins cannot be read now and are left as they are: ") + error.what());
    return std::nullopt;
  }
  m_seen = seen;
  m_lastReason.clear();
  if (seen == Stamp{}) return std::vector<Grant>();
  try {
    if (text.size() > kLongestFile) throw std::runtime_error("too long");
    std::vector<Grant> grants = parse(text);
    keepNewest(grants);
    return grants;
  } catch (const std::exception &) {
    setAside();
    return std::vector<Grant>();
  }
}

void GrantFile::setAside() {
  std::filesystem::path aside;
  int number = 1;
  do {
    aside = m_path.string() + ".damaged-" + std::to_string(number++);
  } while (std::filesystem::exists(std::filesystem::symlink_status(aside)));
  std::error_code error;
  std::filesystem::rename(m_path, aside, error);
  m_complain("the sign-ins in " + m_path.string() + " are damaged; " +
             (error ? "they could not be set aside: " + error.message()
                    : "they are kept as " + aside.string() + ", and a new sign-in is needed"));
  m_seen = stamp();
}

void GrantFile::change(std::vector<Grant> &grants, const std::function<void(std::vector<Grant> &)> &change) {
  if (!m_path.empty()) {
    const std::filesystem::path folder = m_path.parent_path();
    std::error_code ignored;
    std::filesystem::create_directories(folder.parent_path(), ignored);
    ::mkdir(folder.c_str(),
            0700);  // one that is there keeps its mode; what cannot be made shows when writing
  }
  const Lock lock(m_path);
  if (mayHaveChanged()) {
    if (auto present = read()) grants = *std::move(present);
  }
  const std::vector<Grant> before = grants;
  change(grants);
  keepNewest(grants);
  // What cannot be read is not replaced either; the change holds until it can be.
  if (grants != before && !m_path.empty() && isReadable()) write(grants);
}

void GrantFile::write(const std::vector<Grant> &grants) {
  Json list = Json::array();
  for (const Grant &grant : grants) list.push_back(toJson(grant));
  try {
    writeFile(m_path, Json{{"version", kVersion}, {"grants", list}}.dump(1) + '\n', 0600);
  } catch (const std::runtime_error &error) {
    m_complain(std::string("the sign-ins cannot be written and hold for this run only: ") + error.what());
    return;
  }
  m_seen = stamp();
}

}  // namespace velmora
