// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "auth/JsonValue.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace velmora {

using Json = nlohmann::json;

JsonValue::JsonValue(std::shared_ptr<const Json> value) : m_value(std::move(value)) {}

std::optional<JsonValue> JsonValue::parse(std::string_view text) {
  Json value = Json::parse(text, nullptr, false);
  if (value.is_discarded()) return std::nullopt;
  return JsonValue(std::make_shared<const Json>(std::move(value)));
}

JsonValue JsonValue::operator[](std::string_view member) const {
  if (!m_value || !m_value->is_object()) return {};
  const auto found = m_value->find(member);
  if (found == m_value->end()) return {};
  return JsonValue(std::shared_ptr<const Json>(m_value, &*found));
}

JsonValue JsonValue::operator[](std::size_t index) const {
  if (!m_value || !m_value->is_array() || index >= m_value->size()) return {};
  return JsonValue(std::shared_ptr<const Json>(m_value, &(*m_value)[index]));
}

std::optional<QString> JsonValue::string() const {
  if (!m_value || !m_value->is_string()) return std::nullopt;
  return QString::fromStdString(m_value->get_ref<const std::string &>());
}

std::optional<std::int64_t> JsonValue::integer() const {
  if (!m_value || !m_value->is_number()) return std::nullopt;
  if (m_value->is_number_float()) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const auto number = m_value->get<double>();
    if (!(number >= -limit && number < limit) || number != std::trunc(number)) return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  if (m_value->is_number_unsigned() && !std::in_range<std::int64_t>(m_value->get<std::uint64_t>())) {
    return std::nullopt;
  }
  return m_value->get<std::int64_t>();
}

bool JsonValue::isNull() const { return m_value && m_value->is_null(); }

}  // namespace velmora
