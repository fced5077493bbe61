// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "foundation/Descriptor.h"

namespace velmora {

/// A local socket at which a running service tells each caller one text.
class StatusSocket {
 public:
  /// Listens in `folder`. Throws `std::runtime_error`.
  explicit StatusSocket(const std::filesystem::path &folder);

  /// Readable when somebody asks.
  [[nodiscard]] int descriptor() const { return m_listener.number(); }
  /// Gives `text` to whoever has asked first. Never blocks.
  [[nodiscard]] bool answer(const std::string &text) const;

  /// Asks the service of `folder` for its first line, without its end and in printable ASCII; nothing when
  /// the service lets a second go by.
  [[nodiscard]] static std::optional<std::string> ask(const std::filesystem::path &folder);

 private:
  Descriptor m_listener;
};

}  // namespace velmora
