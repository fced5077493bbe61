// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// JSON from outside, read without ever failing: what is not there is an empty value.
//
//   const auto answer = JsonValue::parse(body);
//   if (answer) use((*answer)["redirect_uris"][1].string());
#pragma once

#include <QString>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace velmora {

/// A place in a JSON text, or the empty value. Cheap to copy: copies share the text's values, which never
/// change. Any thread.
class JsonValue {
 public:
  /// The empty value, which is not JSON null either.
  JsonValue() = default;

  /// Nothing when `text` is no JSON; a text of just `null` is.
  [[nodiscard]] static std::optional<JsonValue> parse(std::string_view text);

  /// The member of an object, the element of an array; else the empty value.
  [[nodiscard]] JsonValue operator[](std::string_view member) const;
  [[nodiscard]] JsonValue operator[](std::size_t index) const;

  /// A text, and nothing else.
  [[nodiscard]] std::optional<QString> string() const;
  /// A number without a fraction that 64 bits hold, and nothing else.
  [[nodiscard]] std::optional<std::int64_t> integer() const;
  /// True for JSON null only.
  [[nodiscard]] bool isNull() const;

 private:
  explicit JsonValue(std::shared_ptr<const nlohmann::json> value);

  std::shared_ptr<const nlohmann::json> m_value;  // null: the empty value; else shares the whole text's life
};

}  // namespace velmora
