// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What a client sends to the local assistant, from the bytes of its requests to what is sent back.
#include <QTimeZone>

#include "assistant/AssistantProvider.h"
#include "assistant/skills/ShoppingList.h"
#include "fuzz/Input.h"
#include "fuzz/ScriptedServerCall.h"
#include "fuzz/Setup.h"

namespace velmora {
namespace {

using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
using Response = Google_Assistant_Embedded_V1alpha1_ConverseResponse;
using Config = Google_Assistant_Embedded_V1alpha1_ConverseConfig;
using Session = Google_Assistant_Embedded_V1Alpha1_EmbeddedAssistantConverseSession;

std::string configuration(bool mp3, int volume, const std::string &state) {
  Google_Assistant_Embedded_V1alpha1_AudioInConfig in;
  in.setEncoding(decltype(in)::Encoding::linear16);
  in.setSampleRateHertz(16000);
  Google_Assistant_Embedded_V1alpha1_AudioOutConfig out;
  out.setEncoding(mp3 ? decltype(out)::Encoding::mp3 : decltype(out)::Encoding::linear16);
  out.setSampleRateHertz(16000);
  out.setVolumePercentage(volume);
  Config config;
  config.setAudioInConfig(in);
  config.setAudioOutConfig(out);
  config.setConverseState(Google_Assistant_Embedded_V1alpha1_ConverseState::parse(state));
  Request request;
  request.setConfig(config);
  return request.serialize();
}

/// Tenths of a second of something loud or of silence.
std::string sound(int tenths, int level) {
  std::string bytes(static_cast<std::size_t>(tenths) * 3200, '\0');
  for (std::size_t i = 1; level > 0 && i < bytes.size(); i += 2)
    bytes[i] = static_cast<char>(i / 80 % 2 != 0 ? level : -level);
  Request request;
  request.setAudioIn(std::move(bytes));
  return request.serialize();
}

/// The state of the last response, which a client brings back.
std::string checked(const fuzz::Client &client, bool succeeded) {
  std::string state;
  for (std::size_t i = 0; i < client.responses.size(); ++i) {
    const Response response = Response::parse(client.responses[i]);
    fuzz::require(i > 0 || response.eventType() == Response::EventType::endOfUtterance,
                  "the end of the utterance comes first");
    state = response.result().conversationState();
  }
  fuzz::require(!succeeded || client.responses.size() >= 3, "who is served has an answer");
  fuzz::require(!succeeded || !state.empty(), "an answer ends with the state");
  return state;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static ShoppingList list;
  list.clear();
  int random = 0;
  QDateTime now(QDate(2026, 2, 28), QTime(12, 0), QTimeZone::utc());
  const Services services{.clock = [&] { return now; },
                          .random = [&](int low, int high) { return low + random++ % (high - low + 1); },
                          .shoppingList = list};
  AssistantProvider provider([](std::string_view token) { return token == "good"; },
                             Dialogue(services, StateSeal({})));
  fuzz::Input input(data, size);
  std::string state;
  while (!input.isEmpty()) {
    fuzz::Client client;
    const int kind = input.byte();
    client.metadata.emplace("authorization", (kind & 1) != 0 ? "Bearer " + input.piece() : "Bearer good");
    if ((kind & 2) != 0) client.takes = input.byte() % 8;
    fuzz::setHeard(input.piece(), (kind & 4) == 0);
    const int volume = input.byte() - 64;
    if ((kind & 8) == 0) client.requests.push_back(configuration((kind & 16) != 0, volume, state));
    for (int left = input.byte() % 16; left > 0; --left) {
      const int what = input.byte();
      if (what % 4 == 0) {
        client.requests.push_back(input.piece());
      } else {
        client.requests.push_back(sound(what / 4 % 32, what % 4 == 1 ? 0 : 16 + what % 64));
      }
    }
    const auto call = fuzz::callOf(client);
    Session session(*call, provider);
    bool succeeded = false;
    try {
      provider.converse(session);
      succeeded = session.statusCode() == 0;
    } catch (const MessageError &) {
    } catch (const CallError &) {
    } catch (Session::ServerError) {
      fuzz::require(false, "the end of the stream is expected everywhere");
    }
    if (const std::string next = checked(client, succeeded); succeeded) state = next;
    fuzz::require(provider.statistics().streams() == 0, "no place stays taken");
  }
  return 0;
}

}  // namespace velmora
