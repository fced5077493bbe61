// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How a turn is to be held: the two audio formats, the volume, and where the conversation stands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/OpenEnum.h"
#include "protocol/WireMessage.h"

namespace velmora {

/// The microphone's audio.
class Google_Assistant_Embedded_V1alpha1_AudioInConfig : public WireMessage {
 public:
  struct EncodingCases {
    enum class Case : std::int32_t { encodingUnspecified, linear16, flac };
    static constexpr Case encodingUnspecified = Case::encodingUnspecified;
    static constexpr Case linear16 = Case::linear16;
    static constexpr Case flac = Case::flac;
    static constexpr Case lastCase = flac;
  };
  using Encoding = OpenEnum<EncodingCases>;

  Google_Assistant_Embedded_V1alpha1_AudioInConfig() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_AudioInConfig parse(std::string_view bytes);

  [[nodiscard]] Encoding encoding() const;
  void setEncoding(Encoding encoding);

  [[nodiscard]] std::int32_t sampleRateHertz() const;
  void setSampleRateHertz(std::int32_t sampleRateHertz);
};

/// The answer's audio.
class Google_Assistant_Embedded_V1alpha1_AudioOutConfig : public WireMessage {
 public:
  /// Numbered otherwise than the encodings of `AudioInConfig`.
  struct EncodingCases {
    enum class Case : std::int32_t { encodingUnspecified, linear16, mp3, opusInOgg };
    static constexpr Case encodingUnspecified = Case::encodingUnspecified;
    static constexpr Case linear16 = Case::linear16;
    static constexpr Case mp3 = Case::mp3;
    static constexpr Case opusInOgg = Case::opusInOgg;
    static constexpr Case lastCase = opusInOgg;
  };
  using Encoding = OpenEnum<EncodingCases>;

  Google_Assistant_Embedded_V1alpha1_AudioOutConfig() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_AudioOutConfig parse(std::string_view bytes);

  [[nodiscard]] Encoding encoding() const;
  void setEncoding(Encoding encoding);

  [[nodiscard]] std::int32_t sampleRateHertz() const;
  void setSampleRateHertz(std::int32_t sampleRateHertz);

  [[nodiscard]] std::int32_t volumePercentage() const;
  void setVolumePercentage(std::int32_t volumePercentage);
};

/// Where the conversation stands, in bytes that only the service understands.
class Google_Assistant_Embedded_V1alpha1_ConverseState : public WireMessage {
 public:
  Google_Assistant_Embedded_V1alpha1_ConverseState() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_ConverseState parse(std::string_view bytes);

  /// Valid until the state is changed or goes.
  [[nodiscard]] const std::string &conversationState() const;
  void setConversationState(std::string conversationState);
};

/// Each sub-message is absent until it is set, and reads as a default one while it is absent.
class Google_Assistant_Embedded_V1alpha1_ConverseConfig : public WireMessage {
 public:
  Google_Assistant_Embedded_V1alpha1_ConverseConfig() noexcept = default;
  /// Throws `MessageError`.
  [[nodiscard]] static Google_Assistant_Embedded_V1alpha1_ConverseConfig parse(std::string_view bytes);

  [[nodiscard]] Google_Assistant_Embedded_V1alpha1_AudioInConfig audioInConfig() const;
  [[nodiscard]] bool hasAudioInConfig() const;
  void setAudioInConfig(Google_Assistant_Embedded_V1alpha1_AudioInConfig audioInConfig);
  void clearAudioInConfig();

  [[nodiscard]] Google_Assistant_Embedded_V1alpha1_AudioOutConfig audioOutConfig() const;
  [[nodiscard]] bool hasAudioOutConfig() const;
  void setAudioOutConfig(Google_Assistant_Embedded_V1alpha1_AudioOutConfig audioOutConfig);
  void clearAudioOutConfig();

  [[nodiscard]] Google_Assistant_Embedded_V1alpha1_ConverseState converseState() const;
  [[nodiscard]] bool hasConverseState() const;
  void setConverseState(Google_Assistant_Embedded_V1alpha1_ConverseState converseState);
  void clearConverseState();
};

}  // namespace velmora
