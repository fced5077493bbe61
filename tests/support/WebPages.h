// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QVariant>
#include <QWidget>
#include <algorithm>
#include <string>
#include <vector>

#include "support/HttpServer.h"

namespace velmora::tests {

inline HttpAnswer page(const std::string &body, const std::string &title = "page") {
  return {.body = "<!DOCTYPE html><title>" + title + "</title>" + body, .type = "text/html"};
}

/// How many requests of "METHOD /path" have come, their queries aside.
inline std::ptrdiff_t countOf(const HttpServer &server, const std::string &wanted) {
  const auto requests = server.requests().values();
  return std::count_if(requests.begin(), requests.end(), [&](const HttpRequest &request) {
    return request.method + ' ' + request.target.substr(0, request.target.find('?')) == wanted;
  });
}

/// The engine's own widget inside `widget`, which no test is linked with; null before it is loaded.
inline QWidget *engineIn(const QWidget &widget) {
  for (QWidget *child : widget.findChildren<QWidget *>()) {
    if (child->inherits("QWebEngineView")) return child;
  }
  return nullptr;
}

}  // namespace velmora::tests
