// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "assistant/signin/FormFields.h"

#include <QByteArray>
#include <QString>
#include <QStringDecoder>
#include <charconv>

namespace velmora {
namespace {

bool isText(std::string_view bytes) {
  if (bytes.find('\0') != std::string_view::npos) return false;
  QStringDecoder decoder(QStringDecoder::Utf8);
  [[maybe_unused]] const QString text =
      decoder(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
  return !decoder.hasError();
}

}  // namespace

std::optional<std::string> formDecoded(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i] == '+' ? ' ' : text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned value = 0;
    const char *const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value, 16);
    if (digits.size() != 2 || error != std::errc() || rest != end) return std::nullopt;
    decoded += static_cast<char>(value);
    i += 2;
  }
  return decoded;
}

std::optional<FormFields> parseForm(std::string_view text) {
  FormFields fields;
  while (!text.empty()) {
    const std::string_view pair = text.substr(0, text.find('&'));
    text.remove_prefix(std::min(pair.size() + 1, text.size()));
    const std::size_t equals = pair.find('=');
    const auto name = formDecoded(pair.substr(0, equals));
    const auto value =
        equals == std::string_view::npos ? std::string() : formDecoded(pair.substr(equals + 1));
    if (!name || !value || !isText(*name) || !isText(*value)) return std::nullopt;
    if (value->empty()) continue;
    if (!fields.emplace(*name, *value).second) return std::nullopt;
  }
  return fields;
}

std::string percentEncoded(std::string_view text) {
  // Byte by byte: by way of a QString a byte order mark would be lost.
  return QByteArray(text.data(), static_cast<qsizetype>(text.size())).toPercentEncoding().toStdString();
}

std::string valueOf(const FormFields &fields, std::string_view name) {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string() : found->second;
}

}  // namespace velmora
