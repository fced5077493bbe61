// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/CallResult.h"

#include <algorithm>
#include <string_view>

namespace velmora {
namespace {

bool isSecret(std::string_view key) {
  return key == "authorization" || key == "cookie" || key == "set-cookie";
}

/// Enough to tell two tokens apart, too little to use one; a blank tells "Bearer" from the token.
std::string shortened(const std::string &secret) {
  const std::size_t scheme = secret.find(' ');
  const std::size_t start = scheme == std::string::npos ? 0 : scheme + 1;
  const std::size_t shown = std::min<std::size_t>(4, (secret.size() - start) / 4);
  return secret.substr(0, start + shown) + (secret.size() > start ? "…" : "");
}

}  // namespace

std::string description(const Metadata &metadata) {
  std::string text = "{";
  for (const auto &[key, value] : metadata) {
    if (text.size() > 1) text += ", ";
    text += key + ": " + (isSecret(key) ? shortened(value) : value);
  }
  return text + "}";
}

std::string CallResult::description() const {
  std::string text = (succeeded() ? "succeeded" : "failed with status " + std::to_string(statusCode));
  if (statusMessage) text += " (" + *statusMessage + ")";
  if (resultData) text += ", " + std::to_string(resultData->size()) + " bytes of details";
  return text + ", initial metadata " + velmora::description(initialMetadata) + ", trailing metadata " +
         velmora::description(trailingMetadata);
}

const char *CallError::name() const {
  switch (m_case) {
    case Case::illegalMetadata: return "illegalMetadata";
    case Case::callEnded: return "callEnded";
    case Case::sendingClosed: return "sendingClosed";
    case Case::sendFailed: return "sendFailed";
    case Case::completionThread: return "completionThread";
  }
  return "unknown";
}

}  // namespace velmora
