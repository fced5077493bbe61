// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/ConverseResponse.h"

#include <protocol/embedded_assistant.pb.h>

#include "protocol/MessageFields.h"

namespace velmora {

namespace wire = google::assistant::embedded::v1alpha1;

using AudioOut = Google_Assistant_Embedded_V1alpha1_AudioOut;
using ConverseResult = Google_Assistant_Embedded_V1alpha1_ConverseResult;
using ConverseResponse = Google_Assistant_Embedded_V1alpha1_ConverseResponse;

AudioOut AudioOut::parse(std::string_view bytes) {
  return MessageFields::parse<AudioOut, wire::AudioOut>(bytes);
}

const std::string &AudioOut::audioData() const {
  return MessageFields::read<wire::AudioOut>(*this).audio_data();
}
void AudioOut::setAudioData(std::string audioData) {
  MessageFields::write<wire::AudioOut>(*this).set_audio_data(std::move(audioData));
}

ConverseResult ConverseResult::parse(std::string_view bytes) {
  return MessageFields::parse<ConverseResult, wire::ConverseResult>(bytes);
}

const std::string &ConverseResult::spokenRequestText() const {
  return MessageFields::read<wire::ConverseResult>(*this).spoken_request_text();
}
void ConverseResult::setSpokenRequestText(std::string spokenRequestText) {
  spokenRequestText = checkedText(std::move(spokenRequestText), "spokenRequestText");
  MessageFields::write<wire::ConverseResult>(*this).set_spoken_request_text(std::move(spokenRequestText));
}

const std::string &ConverseResult::spokenResponseText() const {
  return MessageFields::read<wire::ConverseResult>(*this).spoken_response_text();
}
void ConverseResult::setSpokenResponseText(std::string spokenResponseText) {
  spokenResponseText = checkedText(std::move(spokenResponseText), "spokenResponseText");
  MessageFields::write<wire::ConverseResult>(*this).set_spoken_response_text(std::move(spokenResponseText));
}

const std::string &ConverseResult::conversationState() const {
  return MessageFields::read<wire::ConverseResult>(*this).conversation_state();
}
void ConverseResult::setConversationState(std::string conversationState) {
  MessageFields::write<wire::ConverseResult>(*this).set_conversation_state(std::move(conversationState));
}

ConverseResult::MicrophoneMode ConverseResult::microphoneMode() const {
  return MicrophoneMode::fromNumber(MessageFields::read<wire::ConverseResult>(*this).microphone_mode());
}
void ConverseResult::setMicrophoneMode(MicrophoneMode microphoneMode) {
  MessageFields::write<wire::ConverseResult>(*this).set_microphone_mode(
      static_cast<wire::ConverseResult::MicrophoneMode>(microphoneMode.number()));
}

std::int32_t ConverseResult::volumePercentage() const {
  return MessageFields::read<wire::ConverseResult>(*this).volume_percentage();
}
void ConverseResult::setVolumePercentage(std::int32_t volumePercentage) {
  MessageFields::write<wire::ConverseResult>(*this).set_volume_percentage(volumePercentage);
}

using OneOf = ConverseResponse::OneOf_ConverseResponse;
using Fields = wire::ConverseResponse;

OneOf OneOf::error(Google_Rpc_Status value) { return value; }
OneOf OneOf::eventType(EventType value) { return value; }
OneOf OneOf::audioOut(AudioOut value) { return value; }
OneOf OneOf::result(ConverseResult value) { return value; }

ConverseResponse ConverseResponse::parse(std::string_view bytes) {
  return MessageFields::parse<ConverseResponse, Fields>(bytes);
}

OneOf ConverseResponse::converseResponse() const {
  switch (MessageFields::read<Fields>(*this).converse_response_case()) {
    case Fields::kError: return error();
    case Fields::kEventType: return eventType();
    case Fields::kAudioOut: return audioOut();
    case Fields::kResult: return result();
    case Fields::CONVERSE_RESPONSE_NOT_SET: break;
  }
  return {};
}

void ConverseResponse::setConverseResponse(OneOf converseResponse) {
  if (auto *error = std::get_if<Google_Rpc_Status>(&converseResponse)) {
    setError(std::move(*error));
  } else if (const auto *eventType = std::get_if<EventType>(&converseResponse)) {
    setEventType(*eventType);
  } else if (auto *audioOut = std::get_if<AudioOut>(&converseResponse)) {
    setAudioOut(std::move(*audioOut));
  } else if (auto *result = std::get_if<ConverseResult>(&converseResponse)) {
    setResult(std::move(*result));
  } else if (MessageFields::read<Fields>(*this).converse_response_case() !=
             Fields::CONVERSE_RESPONSE_NOT_SET) {
    MessageFields::write<Fields>(*this).clear_converse_response();
  }
}

Google_Rpc_Status ConverseResponse::error() const {
  return MessageFields::part<Google_Rpc_Status>(*this, MessageFields::read<Fields>(*this).error());
}
void ConverseResponse::setError(Google_Rpc_Status error) {
  MessageFields::assign(*MessageFields::write<Fields>(*this).mutable_error(), std::move(error));
}

ConverseResponse::EventType ConverseResponse::eventType() const {
  return EventType::fromNumber(MessageFields::read<Fields>(*this).event_type());
}
void ConverseResponse::setEventType(EventType eventType) {
  MessageFields::write<Fields>(*this).set_event_type(static_cast<Fields::EventType>(eventType.number()));
}

AudioOut ConverseResponse::audioOut() const {
  return MessageFields::part<AudioOut>(*this, MessageFields::read<Fields>(*this).audio_out());
}
void ConverseResponse::setAudioOut(AudioOut audioOut) {
  MessageFields::assign(*MessageFields::write<Fields>(*this).mutable_audio_out(), std::move(audioOut));
}

ConverseResult ConverseResponse::result() const {
  return MessageFields::part<ConverseResult>(*this, MessageFields::read<Fields>(*this).result());
}
void ConverseResponse::setResult(ConverseResult result) {
  MessageFields::assign(*MessageFields::write<Fields>(*this).mutable_result(), std::move(result));
}

}  // namespace velmora
