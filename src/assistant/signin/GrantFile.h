// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The grants of the sign-in on disk. Several assistants of one user share the file.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// What one sign-in gave. Secrets appear as the digests that `digestOf` makes.
struct Grant {
  std::string clientId;
  std::string scope;
  std::string codeDigest;  ///< of the code that was paid with: seen again, it gives the grant away
  std::string accessDigest;
  std::string refreshDigest;
  std::int64_t accessExpiry;  ///< of the access token, in seconds since 1970
  std::int64_t lastUse;       ///< when it was made or last refreshed, in seconds since 1970

  bool operator==(const Grant &) const = default;
};

/// At most this many are kept.
inline constexpr std::size_t kMostGrants = 64;

/// A file of mode 0600 that is replaced in one step. Not thread-safe; other processes are kept out by a lock
/// while one changes it.
class GrantFile {
 public:
  /// Receives one line about a file that cannot be used.
  using Complaint = std::function<void(std::string_view line)>;

  /// With an empty path nothing is ever kept. Nothing is made before the first change.
  GrantFile(std::filesystem::path path, Complaint complain);

  /// The grants in the file when they may have changed since this object last read or wrote them; none when
  /// there is no file. A damaged file is set aside beside it with one line and counts as none.
  [[nodiscard]] std::optional<std::vector<Grant>> readChanges();

  /// Holds `change` of the present grants against other processes: what it returns is written. Grants that
  /// cannot be written are complained of and hold for this run.
  void change(std::vector<Grant> &grants, const std::function<void(std::vector<Grant> &)> &change);

 private:
  /// Tells one file from the next that replaces it.
  struct Stamp {
    ino_t inode = 0;
    std::int64_t nanoseconds = 0;
    off_t size = 0;
    bool operator==(const Stamp &) const = default;
  };

  class Lock;
  [[nodiscard]] Stamp stamp() const;
  [[nodiscard]] std::vector<Grant> read();
  void setAside();
  void write(const std::vector<Grant> &grants);

  const std::filesystem::path m_path;
  const Complaint m_complain;
  Stamp m_seen;  // all zeros: no file
};

}  // namespace velmora
