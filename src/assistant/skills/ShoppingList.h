// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "foundation/FileLock.h"

namespace velmora {

/// The user's shopping list, kept in a file of one item a line. Any thread.
class ShoppingList {
 public:
  static constexpr std::size_t kMostItems = 50;

  /// A list in `file` (mode 0600, made when something is put on it); one in memory only for an empty path.
  explicit ShoppingList(std::filesystem::path file = {}) : m_file(std::move(file)) {}

  // All of them throw `std::runtime_error` with the path and the reason when the file cannot be read; the
  // list is then as it was before. One that cannot be written is kept in memory, with one line in the log,
  // until it can, or another process has written the file. Of several processes one at a time changes it.

  [[nodiscard]] std::vector<std::string> items() const;
  /// Puts `item` at the end unless it is there already or the list is full. True when it is on the list now.
  bool add(const std::string &item);
  /// True when it was on the list.
  bool remove(const std::string &item);
  void clear();
  /// False while the list is in memory only.
  [[nodiscard]] bool isOnDisk() const;

 private:
  [[nodiscard]] std::vector<std::string> read() const;
  [[nodiscard]] std::optional<FileLock> lockFile() const;
  [[nodiscard]] std::filesystem::file_time_type lastWritten() const;
  void write(const std::vector<std::string> &items);

  const std::filesystem::path m_file;
  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  std::vector<std::string> m_inMemory;
  bool m_isInMemory = m_file.empty();
  std::filesystem::file_time_type m_writtenBefore;  // the file, when it could not be written
};

}  // namespace velmora
