// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The client of a call, and the world behind the assistant, as a run wants them.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "protocol/ServerCall.h"

namespace velmora::fuzz {

struct Client {
  std::deque<std::string> requests;    ///< still to be received; then the stream ends
  std::vector<std::string> responses;  ///< that were sent to it
  int takes = 1000;                    ///< so many responses, then it is gone
  Metadata metadata;
};

/// The client outlives the call.
std::unique_ptr<ServerCall> callOf(Client &client);

/// What the recognisers hear from now on; sure of it or not.
void setHeard(std::string text, bool confident);

}  // namespace velmora::fuzz
