// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What velmora-converse prints of a turn.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/ConverseTurn.h"

namespace velmora {

/// Where the access token of a conversation came from.
enum class TokenSource { argument, localAssistant, stored, none };

/// What an error line says of the service.
struct ServiceDescription {
  std::string address;
  TokenSource tokenSource = TokenSource::none;
};

/// `text` on one line that a terminal shows as it is: runs of control characters and line breaks become a
/// blank, what is not UTF-8 becomes U+FFFD.
[[nodiscard]] std::string plainText(std::string_view text);

/// "You: …" and "Velmora: …", each with its newline.
[[nodiscard]] std::string textReport(const Turn &turn);

/// One JSON object on one line, with its newline.
[[nodiscard]] std::string jsonReport(const Turn &turn);

/// Why a turn failed and, where that helps, what to do; one line without a newline.
[[nodiscard]] std::string explain(const Turn &turn, const ServiceDescription &service);

}  // namespace velmora
