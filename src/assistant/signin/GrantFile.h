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
  /// there is no file. What was read and is damaged is set aside beside the file with one line and counts as
  /// none. A file that cannot be read is left alone with one line for each reason, and is tried anew each
  /// time.
  [[nodiscard]] std::optional<std::vector<Grant>> readChanges();

  /// Holds `change` of the present grants against other processes: what it returns is written. Grants that
  /// cannot be written are complained of and hold for this run.
  /// So do those for which the file cannot be read, until it can be.
  void change(std::vector<Grant> &grants, const std::function<void(std::vector<Grant> &)> &change);

  /// False while the file is there but its grants are not known.
  [[nodiscard]] bool isReadable() const { return m_seen.has_value(); }

 private:
  /// Tells one file from the next that replaces it.
  struct Stamp {
    ino_t inode = 0;
    std::int64_t nanoseconds = 0;
    off_t size = 0;
    bool operator==(const Stamp &) const = default;
  };

  class Lock;
  /// Nothing when the system does not tell.
  [[nodiscard]] std::optional<Stamp> stamp() const;
  [[nodiscard]] bool mayHaveChanged() const;
  /// Nothing when the file cannot be read.
  [[nodiscard]] std::optional<std::vector<Grant>> read();
  void setAside();
  void write(const std::vector<Grant> &grants);

  const std::filesystem::path m_path;
  const Complaint m_complain;
  std::optional<Stamp> m_seen = Stamp{};  // all zeros: no file; nothing: it could not be read
  std::string m_lastReason;               // why it could not be, complained of already
};

}  // namespace velmora
