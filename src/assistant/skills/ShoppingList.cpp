// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/skills/ShoppingList.h"

#include <QString>
#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "foundation/File.h"
#include "foundation/Log.h"

namespace velmora {
namespace {

constexpr qsizetype kLongestItem = 100;  // characters

/// What can be shown and spoken of a line that anything may have written.
std::string plainText(const std::string &line) {
  QString text;
  for (const QChar c : QString::fromStdString(line)) {
    if (c != QChar::ReplacementCharacter && c.category() != QChar::Other_Control) text += c;
  }
  text.truncate(kLongestItem);
  if (!text.isEmpty() && text.back().isHighSurrogate()) text.chop(1);
  return text.trimmed().toStdString();
}

}  // namespace

std::vector<std::string> ShoppingList::items() const {
  const std::lock_guard lock(m_mutex);
  return read();
}

bool ShoppingList::add(const std::string &item) {
  const std::lock_guard lock(m_mutex);
  const auto alone = lockFile();
  std::vector<std::string> items = read();
  if (std::find(items.begin(), items.end(), item) != items.end()) return true;
  if (items.size() >= kMostItems) return false;
  items.push_back(item);
  write(items);
  return true;
}

bool ShoppingList::remove(const std::string &item) {
  const std::lock_guard lock(m_mutex);
  const auto alone = lockFile();
  std::vector<std::string> items = read();
  if (std::erase(items, item) == 0) return false;
  write(items);
  return true;
}

void ShoppingList::clear() {
  const std::lock_guard lock(m_mutex);
  const auto alone = lockFile();
  write({});
}

bool ShoppingList::isOnDisk() const {
  const std::lock_guard lock(m_mutex);
  return !m_isInMemory;
}

std::optional<FileLock> ShoppingList::lockFile() const {
  if (m_file.empty()) return std::nullopt;
  return std::optional<FileLock>(m_file);
}

std::filesystem::file_time_type ShoppingList::lastWritten() const {
  std::error_code none;
  const auto time = std::filesystem::last_write_time(m_file, none);
  return none ? std::filesystem::file_time_type::min() : time;
}

std::vector<std::string> ShoppingList::read() const {
  if (m_isInMemory && (m_file.empty() || lastWritten() == m_writtenBefore)) return m_inMemory;
  if (!std::filesystem::exists(m_file)) return {};
  std::istringstream lines(readFile(m_file));
  std::vector<std::string> items;
  for (std::string line; std::getline(lines, line) && items.size() < kMostItems;) {
    if (std::string item = plainText(line); !item.empty()) items.push_back(std::move(item));
  }
  return items;
}

void ShoppingList::write(const std::vector<std::string> &items) {
  std::string text;
  for (const std::string &item : items) text += item + '\n';
  m_isInMemory = m_file.empty();
  try {
    if (!m_isInMemory) writeFile(m_file, text, 0600);
  } catch (const std::runtime_error &error) {
    log("Shopping list error: ", error.what());
    m_isInMemory = true;
    m_writtenBefore = lastWritten();
  }
  m_inMemory = m_isInMemory ? items : std::vector<std::string>();
}

}  // namespace velmora
