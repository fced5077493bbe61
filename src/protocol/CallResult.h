// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What a gRPC call is started with and what it ends with.
#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>

namespace velmora {

/// Header fields of a call. Keys are lower-case; a key may stand several times.
using Metadata = std::multimap<std::string, std::string>;

/// For logs: `key: value` pairs. What could sign somebody in is shortened to its first characters.
[[nodiscard]] std::string description(const Metadata &metadata);

/// The numbers that gRPC gives to the outcomes of a call.
enum class StatusCode : int {
  ok = 0,
  cancelled = 1,
  unknown = 2,
  invalidArgument = 3,
  deadlineExceeded = 4,
  resourceExhausted = 8,
  unimplemented = 12,
  internal = 13,
  unavailable = 14,
  unauthenticated = 16
};

/// The end of a call.
struct CallResult {
  int statusCode = 0;  ///< 0 is success; a number that `StatusCode` does not list is possible
  std::optional<std::string> statusMessage = {};
  std::optional<std::string> resultData = {};  ///< the service's machine-readable details, if it sent any
  Metadata initialMetadata = {};
  Metadata trailingMetadata = {};

  [[nodiscard]] bool succeeded() const { return statusCode == 0; }
  [[nodiscard]] std::string description() const;
};

/// What raises when an operation of a call cannot be carried out.
class CallError : public std::runtime_error {
 public:
  enum class Case {
    illegalMetadata,   ///< a header field that HTTP/2 cannot carry
    callEnded,         ///< the call is over, or was cancelled
    sendingClosed,     ///< `closeSend` came before
    sendFailed,        ///< the transport did not take the message
    completionThread,  ///< a blocking operation on the thread that would have to end it
  };
  CallError(Case reason, const std::string &text) : std::runtime_error(text), m_case(reason) {}

  [[nodiscard]] Case errorCase() const { return m_case; }
  /// The name of the case.
  [[nodiscard]] const char *name() const;

 private:
  Case m_case;
};

}  // namespace velmora
