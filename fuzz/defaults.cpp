// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a settings file: what was understood is the same after it was written and read again.
#include "foundation/DefaultsFormat.h"
#include "fuzz/Input.h"
#include "fuzz/Setup.h"

namespace velmora {

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto values = decodeDefaults(QByteArray::fromStdString(input.rest()));
  if (!values) return 0;
  // What is null counts as not there, which shows in the first writing.
  const QByteArray written = encodeDefaults(*values);
  const auto again = decodeDefaults(written);
  fuzz::require(again.has_value(), "what is written can be read");
  fuzz::require(encodeDefaults(*again) == written, "settings are written the same way twice");
  for (auto it = again->begin(); it != again->end(); ++it) {
    fuzz::require(values->value(it.key()).typeId() == it.value().typeId(), "a setting keeps its type");
  }
  return 0;
}

}  // namespace velmora
