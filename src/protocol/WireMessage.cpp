// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/WireMessage.h"

#include <google/protobuf/stubs/common.h>
#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/unknown_field_set.h>

#include "protocol/MessageFields.h"

namespace velmora {
namespace {

// The library would print every text that is not UTF-8 to standard error; what went wrong is ours to report.
// Set while the program loads, before a second thread can parse: the handler is a plain global.
[[maybe_unused]] const auto kFormerLogHandler = google::protobuf::SetLogHandler(nullptr);

std::string render(const google::protobuf::Message *fields, bool singleLine) {
  std::string text;
  if (!fields) return text;
  google::protobuf::TextFormat::Printer printer;
  printer.SetUseUtf8StringEscaping(true);
  printer.SetSingleLineMode(singleLine);
  printer.PrintToString(*fields, &text);
  return text;
}

}  // namespace

std::string WireMessage::serialize() const {
  std::string bytes;
  const auto *fields = MessageFields::any(*this);
  if (fields && !fields->SerializeToString(&bytes)) {
    throw MessageError("a " + fields->GetTypeName() + " is too large to be serialised");
  }
  return bytes;
}

std::string WireMessage::unknownFields() const {
  std::string bytes;
  if (const auto *fields = MessageFields::any(*this)) {
    fields->GetReflection()->GetUnknownFields(*fields).SerializeToString(&bytes);
  }
  return bytes;
}

std::string WireMessage::textFormat() const { return render(MessageFields::any(*this), false); }

std::string WireMessage::debugDescription() const {
  std::string line = render(MessageFields::any(*this), true);
  if (line.ends_with(' ')) line.pop_back();
  return line;
}

// The wire bytes tell any two different messages apart, unknown fields included.
bool WireMessage::equals(const WireMessage &other) const {
  return m_fields == other.m_fields || serialize() == other.serialize();
}

std::size_t WireMessage::hash() const { return std::hash<std::string>()(serialize()); }

std::string checkedText(std::string text, const char *property) {
  // The same judge as in parsing, so that what can be set can also be read back.
  if (text.size() > std::numeric_limits<int>::max() ||
      !google::protobuf::internal::IsStructurallyValidUTF8(text)) {
    throw MessageError(std::string(property) + " is not UTF-8");
  }
  return text;
}

}  // namespace velmora
