// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/RpcStatus.h"

#include <protocol/status.pb.h>

#include "protocol/MessageFields.h"

namespace velmora {

using Fields = google::rpc::Status;

Google_Rpc_Status Google_Rpc_Status::parse(std::string_view bytes) {
  return MessageFields::parse<Google_Rpc_Status, Fields>(bytes);
}

std::int32_t Google_Rpc_Status::code() const { return MessageFields::read<Fields>(*this).code(); }
void Google_Rpc_Status::setCode(std::int32_t code) { MessageFields::write<Fields>(*this).set_code(code); }

const std::string &Google_Rpc_Status::message() const { return MessageFields::read<Fields>(*this).message(); }
void Google_Rpc_Status::setMessage(std::string message) {
  message = checkedText(std::move(message), "message");
  MessageFields::write<Fields>(*this).set_message(std::move(message));
}

std::vector<Google_Protobuf_Any> Google_Rpc_Status::details() const {
  std::vector<Google_Protobuf_Any> details;
  for (const auto &any : MessageFields::read<Fields>(*this).details()) {
    details.push_back({.typeUrl = any.type_url(), .value = any.value()});
  }
  return details;
}

void Google_Rpc_Status::setDetails(std::vector<Google_Protobuf_Any> details) {
  for (auto &any : details) any.typeUrl = checkedText(std::move(any.typeUrl), "typeUrl");
  auto &fields = MessageFields::write<Fields>(*this);
  fields.clear_details();
  for (auto &any : details) {
    auto &added = *fields.add_details();
    added.set_type_url(std::move(any.typeUrl));
    added.set_value(std::move(any.value));
  }
}

}  // namespace velmora
