// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What services answer in the tests.
#pragma once

#include <string>
#include <utility>

#include "protocol/ConverseResponse.h"

namespace velmora::tests {

using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;

inline Response endOfUtterance() {
  Response response;
  response.setEventType(Response::EventType::endOfUtterance);
  return response;
}

inline Response soundOf(std::string bytes) {
  Google_Assistant_Embedded_V1alpha1_AudioOut out;
  out.setAudioData(std::move(bytes));
  Response response;
  response.setAudioOut(std::move(out));
  return response;
}

inline Response resultOf(std::string request, std::string answer = {}, std::string state = {},
                         Result::MicrophoneMode mode = {}) {
  Result result;
  result.setSpokenRequestText(std::move(request));
  result.setSpokenResponseText(std::move(answer));
  result.setConversationState(std::move(state));
  result.setMicrophoneMode(mode);
  Response response;
  response.setResult(std::move(result));
  return response;
}

}  // namespace velmora::tests
