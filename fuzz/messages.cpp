// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Wire bytes as each of the messages: what can be read is the same after it was written and read again.
#include "protocol/Messages.h"
#include "fuzz/Input.h"

namespace velmora {
namespace {

template <typename Message>
void roundTrip(const std::string &bytes) {
  Message message;
  try {
    message = Message::parse(bytes);
  } catch (const MessageError &) {
    return;
  }
  const std::string written = message.serialize();
  const auto again = Message::parse(written);
  fuzz::require(again == message, "a message is equal to itself, written and read again");
  fuzz::require(again.hash() == message.hash(), "equal messages have equal hashes");
  fuzz::require(again.serialize() == written, "a message is written the same way twice");
  fuzz::require(again.unknownFields() == message.unknownFields(), "unknown fields are kept");
  (void)message.textFormat();
  (void)message.debugDescription();
}

void change(const std::string &bytes) {
  try {
    auto response = Google_Assistant_Embedded_V1alpha1_ConverseResponse::parse(bytes);
    const auto before = response;
    const std::string written = response.serialize();
    auto result = response.result();
    result.setSpokenResponseText("changed");
    fuzz::require(response.serialize() == written, "changing a part leaves the whole as it was");
    auto error = response.error();
    error.setDetails(error.details());
    response.setResult(result);
    fuzz::require(before.serialize() == written, "changing a copy leaves the original as it was");
    fuzz::require(response.result().spokenResponseText() == "changed", "what was set can be read");
  } catch (const MessageError &) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const int kind = input.byte() % 6;
  const std::string bytes = input.rest();
  switch (kind) {
    case 0: roundTrip<Google_Assistant_Embedded_V1alpha1_ConverseRequest>(bytes); break;
    case 1: roundTrip<Google_Assistant_Embedded_V1alpha1_ConverseResponse>(bytes); break;
    case 2: roundTrip<Google_Assistant_Embedded_V1alpha1_ConverseResult>(bytes); break;
    case 3: roundTrip<Google_Rpc_Status>(bytes); break;
    case 4: roundTrip<Google_Assistant_Embedded_V1alpha1_ConverseConfig>(bytes); break;
    default: change(bytes); break;
  }
  return 0;
}

}  // namespace velmora
