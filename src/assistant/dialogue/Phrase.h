// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How the sentences that the assistant understands are written down:
//
//   what time is it [now]          words; what stands in brackets may be missing
//   (tell | give) me the time      one of several
//   add <item> ([and] <item>)*     any number of times; + for at least once
//   <item>                         a rule that is defined elsewhere
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// A phrase as a tree.
struct Phrase {
  enum class Kind {
    word,
    rule,  ///< `text` is its name
    sequence,
    alternatives,
    optional,     ///< of one child
    anyNumber,    ///< of one child: *
    atLeastOnce,  ///< of one child: +
  };

  Kind kind = Kind::sequence;
  std::string text = {};
  std::vector<Phrase> children = {};

  /// Throws `std::invalid_argument` with the text from the fault on. Line breaks are blanks.
  [[nodiscard]] static Phrase parse(std::string_view text);
};

}  // namespace velmora
