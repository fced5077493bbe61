// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

namespace velmora {

/// What a service on this machine answered.
struct LoopbackAnswer {
  int status = 0;
  std::string location;  ///< where a redirect leads, which is not followed
  std::string body;
};

/// "http://host:port" and the path of an address; throws `ServiceError` when that is not on this machine.
struct LoopbackAddress {
  std::string origin;
  std::string path;
  [[nodiscard]] static LoopbackAddress parse(const std::string &address);
};

using FormValues = std::map<std::string, std::string>;

/// `values` as a query or a form carries them.
[[nodiscard]] std::string formEncoded(const FormValues &values);

/// Both throw `ServiceError` when there is no answer within 30 seconds, or one over 1 MiB.
[[nodiscard]] LoopbackAnswer getPage(const LoopbackAddress &address, const FormValues &query);
[[nodiscard]] LoopbackAnswer postForm(const LoopbackAddress &address, const FormValues &form);

}  // namespace velmora
