// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What comes down in a turn: an error, an event, a piece of the spoken answer, or the result.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "protocol/OpenEnum.h"
#include "protocol/RpcStatus.h"
#include "protocol/WireMessage.h"

namespace velmora {

/// A piece of the spoken answer, encoded as the request's configuration asked.
class Google_Assistant_Embedded_V1alpha1_AudioOut : public WireMessage {
 public:
  Google_Assistant_Embedded_V1alpha1_AudioOut() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_AudioOut parse(std::string_view bytes);

  /// Valid until the message is changed or goes.
  [[nodiscard]] const std::string &audioData() const;
  void setAudioData(std::string audioData);
};

/// What was understood and answered, and how to go on. The references are valid until the result is changed
/// or goes; setting a text throws `MessageError` unless it is UTF-8.
class Google_Assistant_Embedded_V1alpha1_ConverseResult : public WireMessage {
 public:
  struct MicrophoneModeCases {
    enum class Case : std::int32_t { microphoneModeUnspecified, closeMicrophone, dialogFollowOn };
    static constexpr Case microphoneModeUnspecified = Case::microphoneModeUnspecified;
    static constexpr Case closeMicrophone = Case::closeMicrophone;
    static constexpr Case dialogFollowOn = Case::dialogFollowOn;
    static constexpr Case lastCase = dialogFollowOn;
  };
  using MicrophoneMode = OpenEnum<MicrophoneModeCases>;

  Google_Assistant_Embedded_V1alpha1_ConverseResult() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_ConverseResult parse(std::string_view bytes);

  [[nodiscard]] const std::string &spokenRequestText() const;
  void setSpokenRequestText(std::string spokenRequestText);

  [[nodiscard]] const std::string &spokenResponseText() const;
  void setSpokenResponseText(std::string spokenResponseText);

  /// Opaque bytes, to be sent back with the next turn.
  [[nodiscard]] const std::string &conversationState() const;
  void setConversationState(std::string conversationState);

  [[nodiscard]] MicrophoneMode microphoneMode() const;
  void setMicrophoneMode(MicrophoneMode microphoneMode);

  [[nodiscard]] std::int32_t volumePercentage() const;
  void setVolumePercentage(std::int32_t volumePercentage);
};

class Google_Assistant_Embedded_V1alpha1_ConverseResponse : public WireMessage {
 public:
  struct EventTypeCases {
    enum class Case : std::int32_t { eventTypeUnspecified, endOfUtterance };
    static constexpr Case eventTypeUnspecified = Case::eventTypeUnspecified;
    static constexpr Case endOfUtterance = Case::endOfUtterance;
    static constexpr Case lastCase = endOfUtterance;
  };
  using EventType = OpenEnum<EventTypeCases>;

  /// No case, or one with its value: `OneOf_ConverseResponse::eventType(EventType::endOfUtterance)`.
  struct OneOf_ConverseResponse : std::variant<std::monostate, Google_Rpc_Status, EventType,
                                               Google_Assistant_Embedded_V1alpha1_AudioOut,
                                               Google_Assistant_Embedded_V1alpha1_ConverseResult> {
    using variant::variant;
    [[nodiscard]] static OneOf_ConverseResponse error(Google_Rpc_Status value);
    [[nodiscard]] static OneOf_ConverseResponse eventType(EventType value);
    [[nodiscard]] static OneOf_ConverseResponse audioOut(Google_Assistant_Embedded_V1alpha1_AudioOut value);
    [[nodiscard]] static OneOf_ConverseResponse result(
        Google_Assistant_Embedded_V1alpha1_ConverseResult value);
  };

  Google_Assistant_Embedded_V1alpha1_ConverseResponse() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_ConverseResponse parse(std::string_view bytes);

  [[nodiscard]] OneOf_ConverseResponse converseResponse() const;
  void setConverseResponse(OneOf_ConverseResponse converseResponse);

  // Each case by itself: reads as its default unless it is the case held; setting it drops the one held.

  [[nodiscard]] Google_Rpc_Status error() const;
  void setError(Google_Rpc_Status error);

  [[nodiscard]] EventType eventType() const;
  void setEventType(EventType eventType);

  [[nodiscard]] Google_Assistant_Embedded_V1alpha1_AudioOut audioOut() const;
  void setAudioOut(Google_Assistant_Embedded_V1alpha1_AudioOut audioOut);

  [[nodiscard]] Google_Assistant_Embedded_V1alpha1_ConverseResult result() const;
  void setResult(Google_Assistant_Embedded_V1alpha1_ConverseResult result);
};

}  // namespace velmora
