// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <unistd.h>

#include <utility>

namespace velmora {

/// Owns a file descriptor; -1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : m_number(number) {}
  Descriptor(Descriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }
  ~Descriptor() { close(); }

  [[nodiscard]] int number() const { return m_number; }
  void close() {
    if (m_number >= 0) ::close(std::exchange(m_number, -1));
  }

 private:
  int m_number = -1;
};

}  // namespace velmora
