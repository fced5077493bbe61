// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Queries and forms that the sign-in of the local assistant is sent.
#include "assistant/signin/FormFields.h"
#include "fuzz/Input.h"

namespace velmora {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string text = input.rest();
  fuzz::require(formDecoded(percentEncoded(text)) == text, "what was escaped can be read");
  const auto fields = parseForm(text);
  if (!fields) return 0;
  std::string written;
  for (const auto &[name, value] : *fields) {
    fuzz::require(!value.empty(), "a parameter without a value is none");
    fuzz::require(value.find('\0') == std::string::npos, "no value holds a NUL");
    written += (written.empty() ? "" : "&") + percentEncoded(name) + '=' + percentEncoded(value);
  }
  fuzz::require(parseForm(written) == fields, "fields can be written and read again");
  return 0;
}

}  // namespace velmora
