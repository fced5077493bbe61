// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/skills/ShoppingList.h"

#include <algorithm>
#include <sstream>

#include "foundation/File.h"

namespace velmora {

std::vector<std::string> ShoppingList::items() const {
  const std::lock_guard lock(m_mutex);
  return read();
}

bool ShoppingList::add(const std::string &item) {
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> items = read();
  if (std::find(items.begin(), items.end(), item) != items.end()) return true;
  if (items.size() >= kMostItems) return false;
  items.push_back(item);
  write(items);
  return true;
}

bool ShoppingList::remove(const std::string &item) {
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> items = read();
  if (std::erase(items, item) == 0) return false;
  write(items);
  return true;
}

void ShoppingList::clear() {
  const std::lock_guard lock(m_mutex);
  write({});
}

std::vector<std::string> ShoppingList::read() const {
  if (m_file.empty()) return m_inMemory;
  if (!std::filesystem::exists(m_file)) return {};
  std::istringstream lines(readFile(m_file));
  std::vector<std::string> items;
  for (std::string line; std::getline(lines, line) && items.size() < kMostItems;) {
    if (!line.empty()) items.push_back(line);
  }
  return items;
}

void ShoppingList::write(const std::vector<std::string> &items) {
  if (m_file.empty()) {
    m_inMemory = items;
    return;
  }
  std::string text;
  for (const std::string &item : items) text += item + '\n';
  writeFile(m_file, text, 0600);
}

}  // namespace velmora
