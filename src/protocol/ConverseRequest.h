// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What goes up in a turn: the configuration first, then a block of the microphone's audio per request.
#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "protocol/ConverseConfig.h"
#include "protocol/WireMessage.h"

namespace velmora {

class Google_Assistant_Embedded_V1alpha1_ConverseRequest : public WireMessage {
 public:
  /// No case, or one with its value: `OneOf_ConverseRequest::config(c)`,
  /// `OneOf_ConverseRequest::audioIn(bytes)`.
  struct OneOf_ConverseRequest
      : std::variant<std::monostate, Google_Assistant_Embedded_V1alpha1_ConverseConfig, std::string> {
    using variant::variant;
    [[nodiscard]] static OneOf_ConverseRequest config(
        Google_Assistant_Embedded_V1alpha1_ConverseConfig value);
    [[nodiscard]] static OneOf_ConverseRequest audioIn(std::string value);
  };

  Google_Assistant_Embedded_V1alpha1_ConverseRequest() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_ConverseRequest parse(std::string_view bytes);

  /// Copies the audio, if that is the case; `audioIn()` does not.
  [[nodiscard]] OneOf_ConverseRequest converseRequest() const;
  void setConverseRequest(OneOf_ConverseRequest converseRequest);

  // Each case by itself: reads as its default unless it is the case held; setting it drops the one held.

  [[nodiscard]] Google_Assistant_Embedded_V1alpha1_ConverseConfig config() const;
  void setConfig(Google_Assistant_Embedded_V1alpha1_ConverseConfig config);

  /// Valid until the request is changed or goes.
  [[nodiscard]] const std::string &audioIn() const;
  void setAudioIn(std::string audioIn);
};

}  // namespace velmora
