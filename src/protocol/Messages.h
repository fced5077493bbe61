// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
//
// The messages of the Converse call.
//
//   using Request = Google_Assistant_Embedded_V1alpha1_ConverseRequest;
//   Request request;
//   request.setAudioIn(std::move(samples));
//   send(request.serialize());
//
//   const auto response = Google_Assistant_Embedded_V1alpha1_ConverseResponse::parse(bytes);
//   show(response.result().spokenRequestText());
#pragma once

#include "protocol/ConverseConfig.h"    // IWYU pragma: export
#include "protocol/ConverseRequest.h"   // IWYU pragma: export
#include "protocol/ConverseResponse.h"  // IWYU pragma: export
#include "protocol/RpcStatus.h"         // IWYU pragma: export
