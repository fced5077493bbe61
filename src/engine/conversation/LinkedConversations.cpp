// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "engine/API.h"
#include "engine/Conversation.h"

namespace velmora {
namespace {

constexpr int kFullVolume = 100;  // percent

class Talk final : public Conversation, private TurnObserver {
 public:
  Talk(ConversationTextDelegate &delegate, ConversationObserver &observer, const Deployment &deployment,
       const UserDefaults &defaults)
      : m_observer(observer), m_api(delegate, deployment, defaults) {
    m_api.setTurnObserver(this);
  }

  void beginTurn(std::int32_t volumePercentage) override { m_api.beginTurn(volumePercentage); }
  void sendAudioFrame(const std::int16_t *samples, std::ptrdiff_t count) override {
    m_api.sendAudioFrame(samples, count);
  }
  void endAudio() override { m_api.endAudio(); }
  void continueIfFollowUp() override { m_api.continueIfFollowUp(); }

 private:
  void responseReceived(const Google_Assistant_Embedded_V1alpha1_ConverseResponse &response) override {
    const int percent = response.result().volumePercentage();  // none is no wish
    if (percent >= 1 && percent <= kFullVolume) m_observer.volumeAsked(percent);
  }
  void turnEnded(const CallResult &result) override { m_observer.turnEnded(result); }

  ConversationObserver &m_observer;
  API m_api;
};

class LinkedConversations final : public ConversationFactory {
 public:
  std::unique_ptr<Conversation> make(ConversationTextDelegate &delegate, ConversationObserver &observer,
                                     const Deployment &deployment, const UserDefaults &defaults) override {
    return std::make_unique<Talk>(delegate, observer, deployment, defaults);
  }
};

}  // namespace

ConversationFactory *conversationFactory(std::string & /*problem*/) {
  static LinkedConversations factory;
  return &factory;
}

void preloadConversations() {}

}  // namespace velmora
