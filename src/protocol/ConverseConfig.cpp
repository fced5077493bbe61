// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "protocol/ConverseConfig.h"

#include <protocol/embedded_assistant.pb.h>

#include "protocol/MessageFields.h"

namespace velmora {

namespace wire = google::assistant::embedded::v1alpha1;

using AudioInConfig = Google_Assistant_Embedded_V1alpha1_AudioInConfig;
using AudioOutConfig = Google_Assistant_Embedded_V1alpha1_AudioOutConfig;
using ConverseState = Google_Assistant_Embedded_V1alpha1_ConverseState;
using ConverseConfig = Google_Assistant_Embedded_V1alpha1_ConverseConfig;

AudioInConfig AudioInConfig::parse(std::string_view bytes) {
  return MessageFields::parse<AudioInConfig, wire::AudioInConfig>(bytes);
}

AudioInConfig::Encoding AudioInConfig::encoding() const {
  return Encoding::fromNumber(MessageFields::read<wire::AudioInConfig>(*this).encoding());
}
void AudioInConfig::setEncoding(Encoding encoding) {
  MessageFields::write<wire::AudioInConfig>(*this).set_encoding(
      static_cast<wire::AudioInConfig::Encoding>(encoding.number()));
}

std::int32_t AudioInConfig::sampleRateHertz() const {
  return MessageFields::read<wire::AudioInConfig>(*this).sample_rate_hertz();
}
void AudioInConfig::setSampleRateHertz(std::int32_t sampleRateHertz) {
  MessageFields::write<wire::AudioInConfig>(*this).set_sample_rate_hertz(sampleRateHertz);
}

AudioOutConfig AudioOutConfig::parse(std::string_view bytes) {
  return MessageFields::parse<AudioOutConfig, wire::AudioOutConfig>(bytes);
}

AudioOutConfig::Encoding AudioOutConfig::encoding() const {
  return Encoding::fromNumber(MessageFields::read<wire::AudioOutConfig>(*this).encoding());
}
void AudioOutConfig::setEncoding(Encoding encoding) {
  MessageFields::write<wire::AudioOutConfig>(*this).set_encoding(
      static_cast<wire::AudioOutConfig::Encoding>(encoding.number()));
}

std::int32_t AudioOutConfig::sampleRateHertz() const {
  return MessageFields::read<wire::AudioOutConfig>(*this).sample_rate_hertz();
}
void AudioOutConfig::setSampleRateHertz(std::int32_t sampleRateHertz) {
  MessageFields::write<wire::AudioOutConfig>(*this).set_sample_rate_hertz(sampleRateHertz);
}

std::int32_t AudioOutConfig::volumePercentage() const {
  return MessageFields::read<wire::AudioOutConfig>(*this).volume_percentage();
}
void AudioOutConfig::setVolumePercentage(std::int32_t volumePercentage) {
  MessageFields::write<wire::AudioOutConfig>(*this).set_volume_percentage(volumePercentage);
}

ConverseState ConverseState::parse(std::string_view bytes) {
  return MessageFields::parse<ConverseState, wire::ConverseState>(bytes);
}

const std::string &ConverseState::conversationState() const {
  return MessageFields::read<wire::ConverseState>(*this).conversation_state();
}
void ConverseState::setConversationState(std::string conversationState) {
  MessageFields::write<wire::ConverseState>(*this).set_conversation_state(std::move(conversationState));
}

ConverseConfig ConverseConfig::parse(std::string_view bytes) {
  return MessageFields::parse<ConverseConfig, wire::ConverseConfig>(bytes);
}

AudioInConfig ConverseConfig::audioInConfig() const {
  return MessageFields::part<AudioInConfig>(
      *this, MessageFields::read<wire::ConverseConfig>(*this).audio_in_config());
}
bool ConverseConfig::hasAudioInConfig() const {
  return MessageFields::read<wire::ConverseConfig>(*this).has_audio_in_config();
}
void ConverseConfig::setAudioInConfig(AudioInConfig audioInConfig) {
  MessageFields::assign(*MessageFields::write<wire::ConverseConfig>(*this).mutable_audio_in_config(),
                        std::move(audioInConfig));
}
void ConverseConfig::clearAudioInConfig() {
  if (hasAudioInConfig()) MessageFields::write<wire::ConverseConfig>(*this).clear_audio_in_config();
}

AudioOutConfig ConverseConfig::audioOutConfig() const {
  return MessageFields::part<AudioOutConfig>(
      *this, MessageFields::read<wire::ConverseConfig>(*this).audio_out_config());
}
bool ConverseConfig::hasAudioOutConfig() const {
  return MessageFields::read<wire::ConverseConfig>(*this).has_audio_out_config();
}
void ConverseConfig::setAudioOutConfig(AudioOutConfig audioOutConfig) {
  MessageFields::assign(*MessageFields::write<wire::ConverseConfig>(*this).mutable_audio_out_config(),
                        std::move(audioOutConfig));
}
void ConverseConfig::clearAudioOutConfig() {
  if (hasAudioOutConfig()) MessageFields::write<wire::ConverseConfig>(*this).clear_audio_out_config();
}

ConverseState ConverseConfig::converseState() const {
  return MessageFields::part<ConverseState>(
      *this, MessageFields::read<wire::ConverseConfig>(*this).converse_state());
}
bool ConverseConfig::hasConverseState() const {
  return MessageFields::read<wire::ConverseConfig>(*this).has_converse_state();
}
void ConverseConfig::setConverseState(ConverseState converseState) {
  MessageFields::assign(*MessageFields::write<wire::ConverseConfig>(*this).mutable_converse_state(),
                        std::move(converseState));
}
void ConverseConfig::clearConverseState() {
  if (hasConverseState()) MessageFields::write<wire::ConverseConfig>(*this).clear_converse_state();
}

}  // namespace velmora
