// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// ByteCall and Channel without gRPC: the linker takes these before it looks into the library. A receiver is
// served at once on its own thread, which may be any.
#include "fuzz/ScriptedByteCall.h"

#include <mutex>
#include <utility>

#include "protocol/ByteCall.h"

namespace velmora {
namespace {

std::mutex theMutex;
std::deque<std::deque<std::string>> theCalls;

}  // namespace

void fuzz::setCalls(std::deque<std::deque<std::string>> calls) {
  const std::lock_guard lock(theMutex);
  theCalls = std::move(calls);
}

class ByteCall::Core {
 public:
  explicit Core(EndCompletion ended) : m_ended(std::move(ended)) {
    const std::lock_guard lock(theMutex);
    if (theCalls.empty()) return;
    m_messages = std::move(theCalls.front());
    theCalls.pop_front();
  }

  std::optional<std::string> next() {
    {
      const std::lock_guard lock(m_mutex);
      if (!m_messages.empty()) {
        std::string message = std::move(m_messages.front());
        m_messages.pop_front();
        return message;
      }
    }
    end({});
    return std::nullopt;
  }

  void end(const CallResult &result) {
    EndCompletion ended;
    {
      const std::lock_guard lock(m_mutex);
      m_messages.clear();
      ended = std::exchange(m_ended, nullptr);
    }
    if (ended) ended(result);
  }

 private:
  std::mutex m_mutex;
  std::deque<std::string> m_messages;
  EndCompletion m_ended;
};

ByteCall::ByteCall(const std::shared_ptr<Channel> & /*channel*/, const std::string & /*method*/,
                   const Metadata & /*metadata*/, EndCompletion ended)
    : m_core(std::make_shared<Core>(std::move(ended))) {}
ByteCall::~ByteCall() { cancel(); }
void ByteCall::send(std::string /*message*/, SendCompletion sent) {
  if (sent) sent(std::nullopt);
}
void ByteCall::receive(ReceiveCompletion received) { received(m_core->next()); }
std::optional<std::string> ByteCall::receive() { return m_core->next(); }
void ByteCall::closeSend(std::function<void()> closed) { closed(); }
void ByteCall::closeSend() {}
void ByteCall::cancel() { m_core->end({.statusCode = static_cast<int>(StatusCode::cancelled)}); }

struct Channel::Implementation {};
Channel::Channel(std::string address, std::unique_ptr<Implementation> implementation)
    : m_address(std::move(address)), m_implementation(std::move(implementation)) {}
Channel::~Channel() = default;
const void *Channel::native() const { return nullptr; }
std::shared_ptr<Channel> Channel::insecure(const std::string &address) {
  return std::shared_ptr<Channel>(new Channel(address, nullptr));
}
std::shared_ptr<Channel> Channel::secure(const std::string &address, const std::optional<std::string> &,
                                         const std::optional<std::string> &) {
  return insecure(address);
}

}  // namespace velmora
