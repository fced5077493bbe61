// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The error that a response may carry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/WireMessage.h"

namespace velmora {

/// Some message with the address of its type. Nobody here looks inside.
struct Google_Protobuf_Any {
  std::string typeUrl;  ///< UTF-8
  std::string value;    ///< wire bytes

  bool operator==(const Google_Protobuf_Any &) const = default;
};

class Google_Rpc_Status : public WireMessage {
 public:
  Google_Rpc_Status() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Rpc_Status parse(std::string_view bytes);

  [[nodiscard]] std::int32_t code() const;
  void setCode(std::int32_t code);

  /// Valid until the status is changed or goes. Setting throws `MessageError` unless the text is UTF-8.
  [[nodiscard]] const std::string &message() const;
  void setMessage(std::string message);

  /// A copy of the list. Setting throws `MessageError` unless each type's address is UTF-8.
  [[nodiscard]] std::vector<Google_Protobuf_Any> details() const;
  void setDetails(std::vector<Google_Protobuf_Any> details);
};

}  // namespace velmora
