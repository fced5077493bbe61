// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// How the sources of the message types reach the generated messages inside; no header of ours includes this.
#pragma once

#include <google/protobuf/message.h>

#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "protocol/WireMessage.h"

namespace velmora {

template <typename Fields>
class WireMessage::StorageOf final : public WireMessage::Storage {
 public:
  Fields fields;
};

struct MessageFields {
  using Generated = google::protobuf::Message;

  /// The generated message whatever its type, null for a default message.
  static const Generated *any(const WireMessage &message) {
    return static_cast<const Generated *>(message.m_fields);
  }

  template <typename Fields>
  static const Fields &read(const WireMessage &message) {
    const Generated *fields = any(message);
    return fields ? static_cast<const Fields &>(*fields) : Fields::default_instance();
  }

  /// The fields, no longer shared with any other message: the place for every change.
  template <typename Fields>
  static Fields &write(WireMessage &message) {
    if (!message.m_storage || message.m_storage->isShared()) {
      auto storage = std::make_unique<WireMessage::StorageOf<Fields>>();
      if (message.m_fields) storage->fields.MergeFrom(read<Fields>(message));
      adopt(message, std::move(storage));
    }
    // Storages are made non-const, only the pointer to a part is.
    return const_cast<Fields &>(read<Fields>(message));
  }

  /// A message that shows `part` of `whole` and shares its storage. An absent part, which reads as the
  /// default instance that all the process has in common, gives a default message.
  template <typename Part, typename Fields>
  static Part part(const WireMessage &whole, const Fields &part) {
    Part message;
    WireMessage &base = message;
    if (&part != &Fields::default_instance()) {
      whole.m_storage->retain();
      base.m_storage = whole.m_storage;
      base.m_fields = static_cast<const Generated *>(&part);
    }
    return message;
  }

  /// Gives `target`, a sub-message, the value of `part`, and takes the fields over if nobody shares them.
  template <typename Fields>
  static void assign(Fields &target, WireMessage &&part) {
    if (part.m_storage && !part.m_storage->isShared()) {
      target.Swap(&write<Fields>(part));
    } else {
      target.CopyFrom(read<Fields>(part));
    }
  }

  /// Throws `MessageError`.
  template <typename Message, typename Fields>
  static Message parse(std::string_view bytes) {
    Message message;
    if (bytes.empty()) return message;
    auto storage = std::make_unique<WireMessage::StorageOf<Fields>>();
    if (bytes.size() > std::numeric_limits<int>::max() ||
        !storage->fields.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) {
      throw MessageError(std::to_string(bytes.size()) + " bytes are not a " + storage->fields.GetTypeName());
    }
    adopt(message, std::move(storage));
    return message;
  }

 private:
  template <typename Fields>
  static void adopt(WireMessage &message, std::unique_ptr<WireMessage::StorageOf<Fields>> storage) {
    const Generated *fields = &storage->fields;
    if (message.m_storage) message.m_storage->release();
    message.m_storage = storage.release();
    message.m_fields = fields;
  }
};

/// `text` if it is UTF-8, else throws `MessageError` naming the `property`: a peer would refuse the message.
[[nodiscard]] std::string checkedText(std::string text, const char *property);

}  // namespace velmora
