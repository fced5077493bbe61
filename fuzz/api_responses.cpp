// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// Responses of a service through two turns of a conversation: what the screen is given is what arrived.
#include <array>
#include <atomic>
#include <deque>
#include <semaphore>

#include "engine/API.h"
#include "fuzz/Input.h"
#include "fuzz/ScriptedByteCall.h"
#include "fuzz/Setup.h"
#include "tests/support/TemporaryFolder.h"

namespace velmora {
namespace {

using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using State = Google_Assistant_Embedded_V1alpha1_ConverseState;
using Result = Google_Assistant_Embedded_V1alpha1_ConverseResult;

const Deployment &deployment() {
  static const tests::TemporaryFolder folder;
  static const Deployment made = [] {
    (void)folder.write("roots.pem", "");
    return Deployment{.folder = folder.path(), .host = "localhost"};
  }();
  return made;
}

struct Screen : ConversationTextDelegate, TurnObserver {
  void updateRequestText(const std::string &text) override {
    fuzz::require(!text.empty(), "an empty request is not shown");
  }
  void updateResponseText(const std::string &text) override {
    fuzz::require(!text.empty(), "an empty answer is not shown");
  }
  void stopListening() override {}
  void startListening() override { ++started; }
  void playResponse(const std::string &mp3) override { played += mp3; }
  void responseReceived(const Response &response) override { (void)response.textFormat(); }
  void turnEnded(const CallResult & /*result*/) override { ended.release(); }

  std::string played;
  int started = 0;
  std::counting_semaphore<> ended{0};
};

/// What a conversation knows after a turn, by the rules rather than by the engine.
struct Expected {
  std::string audio;
  std::optional<State> state;
  bool followUp = false;

  void follow(const std::deque<std::string> &messages) {
    audio.clear();
    if (messages.empty()) followUp = false;
    for (std::size_t i = 0; i < messages.size(); ++i) {
      try {
        const auto response = Response::parse(messages[i]);
        const Result result = response.result();
        audio += response.audioOut().audioData();
        followUp = result.microphoneMode() == Result::MicrophoneMode::dialogFollowOn;
        state = parsed(result.conversationState());
      } catch (const MessageError &) {
        // The first one is skipped; nobody reads on after a later one.
        if (i > 0) return;
        followUp = false;
      }
    }
  }
  static std::optional<State> parsed(const std::string &bytes) {
    try {
      return State::parse(bytes);
    } catch (const MessageError &) {
      return std::nullopt;
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  std::deque<std::deque<std::string>> calls(2);
  for (const std::size_t inFirst = input.byte() % 8; !input.isEmpty();) {
    calls[calls[0].size() < inFirst ? 0 : 1].push_back(input.piece());
  }
  const auto script = calls;
  fuzz::setCalls(std::move(calls));

  const UserDefaults defaults;
  Screen screen;
  API api(screen, deployment(), defaults);
  api.setTurnObserver(&screen);
  Expected expected;
  for (const auto &messages : script) {
    screen.played.clear();
    api.beginTurn(100);
    const std::array<std::int16_t, 160> samples{};
    api.sendAudioFrame(samples.data(), samples.size());
    api.endAudio();
    screen.ended.acquire();
    expected.follow(messages);
    fuzz::require(screen.played == expected.audio, "the whole answer is played, in order");
    fuzz::require(api.converseState() == expected.state, "the state is that of the last response");
    fuzz::require(api.followUp() == expected.followUp, "the last response says whether to listen again");
    const int before = screen.started;
    api.continueIfFollowUp();
    fuzz::require((screen.started > before) == expected.followUp, "listens again if asked to");
    expected.followUp = false;
  }
  return 0;
}

}  // namespace velmora
