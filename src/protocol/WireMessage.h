// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What every wire message is: a value whose copies share one storage until one of them is changed.
//
// A default message has no storage. A sub-message that is read from a message shares the storage of the
// whole, so that reading copies nothing; since it counts as a sharer, a later change of either leaves the
// other as it was. A moved-from message is a default message.
//
// A reference to a text or bytes is valid while one of the messages that share the storage is there,
// unchanged: `response.result().spokenRequestText()` as long as `response` is.
//
// Threads: a message is changed and read like any plain value, by one thread at a time; different messages
// that share a storage may be used, changed and destroyed on different threads at once.
#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmora {

/// Says in one line why bytes are not a message, or why a value cannot go into one.
class MessageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class WireMessage {
 public:
  /// The wire bytes: fields in ascending order, unknown fields last. Throws `MessageError` beyond 2 GiB.
  [[nodiscard]] std::string serialize() const;

  /// The wire bytes of the fields that parsing did not know, in the order read.
  [[nodiscard]] std::string unknownFields() const;

  /// The protobuf text format, a line per field, keyed by the proto names; unknown fields by their number.
  [[nodiscard]] std::string textFormat() const;
  /// The same on a single line.
  [[nodiscard]] std::string debugDescription() const;

  /// Equal messages have equal hashes.
  [[nodiscard]] std::size_t hash() const;

  /// Fields, presence, the oneof's case and unknown fields are all the same.
  template <std::derived_from<WireMessage> Message>
  friend bool operator==(const Message &a, const Message &b) {
    return a.equals(b);
  }

 protected:
  WireMessage() noexcept = default;
  WireMessage(const WireMessage &other) noexcept : m_storage(other.m_storage), m_fields(other.m_fields) {
    if (m_storage) m_storage->retain();
  }
  WireMessage(WireMessage &&other) noexcept
      : m_storage(std::exchange(other.m_storage, nullptr)),
        m_fields(std::exchange(other.m_fields, nullptr)) {}
  WireMessage &operator=(const WireMessage &other) noexcept { return *this = WireMessage(other); }
  WireMessage &operator=(WireMessage &&other) noexcept {
    WireMessage taken(std::move(other));
    std::swap(m_storage, taken.m_storage);
    std::swap(m_fields, taken.m_fields);
    return *this;
  }
  ~WireMessage() {
    if (m_storage) m_storage->release();
  }

 private:
  friend struct MessageFields;

  /// Counts the messages that share it. A shared_ptr would not do: its use_count() does not synchronise with
  /// the sharer that has just let go, which the decision to change the fields in place rests on.
  // NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): only `release` ends a storage
  class Storage {
   public:
    Storage() = default;
    Storage(const Storage &) = delete;
    Storage &operator=(const Storage &) = delete;

    void retain() noexcept { m_sharers.fetch_add(1, std::memory_order_relaxed); }
    void release() noexcept {
      if (m_sharers.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
    }
    [[nodiscard]] bool isShared() const noexcept { return m_sharers.load(std::memory_order_acquire) != 1; }

   protected:
    virtual ~Storage() = default;

   private:
    std::atomic<std::size_t> m_sharers{1};
  };
  template <typename Fields>
  class StorageOf;

  [[nodiscard]] bool equals(const WireMessage &other) const;

  Storage *m_storage = nullptr;    // null: a default message
  const void *m_fields = nullptr;  // the generated message inside m_storage, or one of its sub-messages
};

}  // namespace velmora

template <std::derived_from<velmora::WireMessage> Message>
struct std::hash<Message> {
  std::size_t operator()(const Message &message) const { return message.hash(); }
};
