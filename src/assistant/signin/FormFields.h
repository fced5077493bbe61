// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Parameters as an address's query and a form's body carry them (application/x-www-form-urlencoded).
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Never holds a parameter without a value: such a one counts as absent (RFC 6749, 3.1).
using FormFields = std::map<std::string, std::string, std::less<>>;

/// The parameters of `text`; nothing when an escape is malformed, a value is not UTF-8 or holds a NUL, or a
/// parameter comes twice, which OAuth forbids.
[[nodiscard]] std::optional<FormFields> parseForm(std::string_view text);

/// `text` with '+' and escapes resolved; nothing when an escape is malformed.
[[nodiscard]] std::optional<std::string> formDecoded(std::string_view text);

/// `text` with everything escaped that an address's query does not carry as it is.
[[nodiscard]] std::string percentEncoded(std::string_view text);

/// The value of `name`, empty when it is absent.
[[nodiscard]] std::string valueOf(const FormFields &fields, std::string_view name);

}  // namespace velmora
