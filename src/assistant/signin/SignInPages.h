// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The pages of the sign-in: complete in themselves, without scripts.
#pragma once

#include <string>
#include <string_view>

#include "assistant/signin/HttpListener.h"

namespace velmora {

/// Asks whether `clientName` may use the assistant; the form sends `consent` back with the decision and may
/// lead to `redirectUri`. It says whether what is said is kept on disk. German where `language`, a list as of
/// Accept-Language, begins with that, else English.
[[nodiscard]] HttpResponse consentPage(std::string_view clientName, std::string_view consent,
                                       std::string_view redirectUri, bool isRecorded,
                                       std::string_view language);

/// Says in two short sentences why there is no sign-in and what to do.
[[nodiscard]] HttpResponse signInErrorPage(int status, std::string_view what, std::string_view advice);

}  // namespace velmora
