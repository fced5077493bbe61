// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/ConverseRequest.h"

#include <protocol/embedded_assistant.pb.h>

#include "protocol/MessageFields.h"

namespace velmora {

namespace wire = google::assistant::embedded::v1alpha1;

using Fields = wire::ConverseRequest;
using ConverseConfig = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using ConverseRequest = Google_Assistant_Embedded_V1alpha1_ConverseRequest;

ConverseRequest::OneOf_ConverseRequest ConverseRequest::OneOf_ConverseRequest::config(ConverseConfig value) {
  return value;
}
ConverseRequest::OneOf_ConverseRequest ConverseRequest::OneOf_ConverseRequest::audioIn(std::string value) {
  return value;
}

ConverseRequest ConverseRequest::parse(std::string_view bytes) {
  return MessageFields::parse<ConverseRequest, Fields>(bytes);
}

ConverseRequest::OneOf_ConverseRequest ConverseRequest::converseRequest() const {
  switch (MessageFields::read<Fields>(*this).converse_request_case()) {
    case Fields::kConfig: return config();
    case Fields::kAudioIn: return audioIn();
    case Fields::CONVERSE_REQUEST_NOT_SET: break;
  }
  return {};
}

void ConverseRequest::setConverseRequest(OneOf_ConverseRequest converseRequest) {
  if (auto *config = std::get_if<ConverseConfig>(&converseRequest)) {
    setConfig(std::move(*config));
  } else if (auto *audioIn = std::get_if<std::string>(&converseRequest)) {
    setAudioIn(std::move(*audioIn));
  } else if (MessageFields::read<Fields>(*this).converse_request_case() != Fields::CONVERSE_REQUEST_NOT_SET) {
    MessageFields::write<Fields>(*this).clear_converse_request();
  }
}

ConverseConfig ConverseRequest::config() const {
  return MessageFields::part<ConverseConfig>(*this, MessageFields::read<Fields>(*this).config());
}
void ConverseRequest::setConfig(ConverseConfig config) {
  MessageFields::assign(*MessageFields::write<Fields>(*this).mutable_config(), std::move(config));
}

const std::string &ConverseRequest::audioIn() const { return MessageFields::read<Fields>(*this).audio_in(); }
void ConverseRequest::setAudioIn(std::string audioIn) {
  MessageFields::write<Fields>(*this).set_audio_in(std::move(audioIn));
}

}  // namespace velmora
