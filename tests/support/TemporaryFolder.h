// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace velmora::tests {

/// A private folder that goes with the object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
    if (!::mkdtemp(name.data())) throw std::filesystem::filesystem_error("mkdtemp", name, {});
    m_path = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  [[nodiscard]] const std::filesystem::path &path() const { return m_path; }
  [[nodiscard]] std::filesystem::path write(std::string_view name, std::string_view contents) const {
    auto file = m_path / name;
    std::ofstream(file, std::ios::binary) << contents;
    return file;
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace velmora::tests
