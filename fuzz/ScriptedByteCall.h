// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// What the calls of a run receive, in place of a network.
#pragma once

#include <deque>
#include <string>

namespace velmora::fuzz {

/// The messages of each call to come, in order.
void setCalls(std::deque<std::deque<std::string>> calls);

}  // namespace velmora::fuzz
