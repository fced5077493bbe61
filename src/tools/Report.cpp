// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "tools/Report.h"

#include <QString>
#include <cmath>
#include <nlohmann/json.hpp>

namespace velmora {
namespace {

using Json = nlohmann::ordered_json;

// gRPC status numbers that have an explanation of their own.
constexpr int kDeadlineExceeded = 4;
constexpr int kPermissionDenied = 7;
constexpr int kResourceExhausted = 8;
constexpr int kUnimplemented = 12;
constexpr int kUnavailable = 14;
constexpr int kUnauthenticated = 16;

Json tenths(const std::optional<double> &milliseconds) {
  if (!milliseconds) return nullptr;
  return std::round(*milliseconds * 10) / 10 + 0.0;  // and no "-0.0"
}

/// Escapes the controls that JSON lets through, which a terminal would still obey.
std::string withControlsEscaped(const std::string &json) {
  std::string out;
  for (std::size_t i = 0; i < json.size(); ++i) {
    const auto byte = static_cast<unsigned char>(json[i]);
    const auto next = static_cast<unsigned char>(i + 1 < json.size() ? json[i + 1] : 0);
    char escape[7];
    if (byte == 0x7f) {
      out += "\\u007f";
    } else if (byte == 0xc2 && next < 0xa0) {  // U+0080 to U+009F
      std::snprintf(escape, sizeof escape, "\\u%04x", next);
      out += escape;
      ++i;
    } else {
      out += json[i];
    }
  }
  return out;
}

std::string adviceOnToken(TokenSource source) {
  switch (source) {
    case TokenSource::argument: return "give a valid one with --token";
    case TokenSource::stored: return "sign in anew, or give a valid one with --token";
    case TokenSource::none: return "none is stored: sign in, or give one with --token";
    case TokenSource::localAssistant: break;
  }
  return {};
}

/// gRPC tells why a service cannot be reached only by its text, in words of its own.
struct Unreachable {
  const char *sign;  // what the text contains
  const char *reason;
  const char *advice;
};
constexpr Unreachable kUnreachable[] = {
    {"DNS resolution failed", "its name is not known", "check the address and the network"},
    {"CERTIFICATE_VERIFY_FAILED", "its certificate is not trusted", "see --roots"},
    {"certificate verify failed", "its certificate is not trusted", "see --roots"},
    {"is not in peer certificate", "its certificate is for another name", "check the address, see --roots"},
    {"Handshake read failed", "it accepts connections but says nothing", "check the address"},
    {"andshake failed", "it does not speak TLS as expected", "check the address"},
};

/// The last piece of a text such as "failed to connect to all addresses; last error: UNKNOWN: ipv4:1.2.3.4:5:
/// Failed to connect to remote host: Connection refused".
std::string lastReason(const std::string &message) {
  const std::size_t start = message.rfind(": ");
  const bool nested = message.starts_with("failed to connect to all addresses") && start != std::string::npos;
  const std::string reason = nested ? message.substr(start + 2) : message;
  return reason.starts_with("recvmsg:") ? reason.substr(8) : reason;
}

/// "what: message (advice)", without the pieces that are empty; a service may give the advice itself.
std::string sentence(const std::string &what, const std::string &message, const std::string &advice = {}) {
  const bool advise = !advice.empty() && message.find(advice) == std::string::npos;
  return what + (message.empty() ? "" : ": " + message) + (advise ? " (" + advice + ")" : "");
}

std::string explainUnreachable(const std::string &message, const ServiceDescription &service) {
  const std::string who = "the service at " + service.address;
  if (message == "Cancelling all calls") return sentence(who + " was stopped", {}, "try again");
  if (message == "Socket closed") return sentence(who + " closed the connection", {}, "try again");
  const std::string what = who + " cannot be reached";
  for (const Unreachable &known : kUnreachable) {
    if (message.find(known.sign) != std::string::npos) return sentence(what, known.reason, known.advice);
  }
  return sentence(what, lastReason(message), "check the address and the network");
}

std::string explainStatus(int status, const std::string &message, const ServiceDescription &service) {
  switch (status) {
    case kUnauthenticated:
      return sentence("the service refused the token", message, adviceOnToken(service.tokenSource));
    case kUnavailable: return explainUnreachable(message, service);
    case kPermissionDenied: return sentence("the service does not permit this", message);
    case kResourceExhausted: return sentence("the service is at its limit", message, "try again later");
    case kDeadlineExceeded: return sentence("the service took too long", message, "try again");
    case kUnimplemented:
      return sentence("what answers at " + service.address + " is no assistant service", message,
                      "check the address");
    default: return sentence("the service ended the call with status " + std::to_string(status), message);
  }
}

}  // namespace

std::string plainText(std::string_view text) {
  QString plain;
  bool pendingBlank = false;
  for (const QChar c : QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))) {
    const bool control = c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
                         c.category() == QChar::Separator_Paragraph;
    if (control) {
      pendingBlank = true;
      continue;
    }
    if (pendingBlank && !plain.isEmpty()) plain += QLatin1Char(' ');
    pendingBlank = false;
    plain += c;
  }
  return plain.toStdString();
}

std::string textReport(const Turn &turn) {
  const std::string request = plainText(turn.request);
  const std::string answer = plainText(turn.answer);
  return "You: " + (request.empty() ? "(nothing heard)" : request) +
         "\nVelmora: " + (answer.empty() ? "(no text)" : answer) + "\n";
}

std::string jsonReport(const Turn &turn) {
  const Json report{
      {"request", turn.request},
      {"answer", turn.answer},
      {"audio_bytes", turn.audio.size()},
      {"follow_on", turn.followOn},
      {"status", turn.status},
      {"status_message", turn.statusMessage ? Json(*turn.statusMessage) : Json(nullptr)},
      {"end_of_utterance_ms", tenths(turn.endOfUtterance)},
      {"first_audio_ms", tenths(turn.firstAudio)},
      {"done_ms", tenths(turn.done)},
  };
  return withControlsEscaped(report.dump(-1, ' ', false, Json::error_handler_t::replace)) + "\n";
}

std::string explain(const Turn &turn, const ServiceDescription &service) {
  const std::string message = turn.statusMessage.value_or("");
  switch (turn.outcome) {
    case Turn::Outcome::answered: return {};
    case Turn::Outcome::refused:
      if (turn.stalled && turn.status == kDeadlineExceeded) {
        return "the audio has stalled: nothing came for " + std::to_string(turn.stalled->count()) +
               " s, and the service ended the call";
      }
      return plainText(explainStatus(turn.status, message, service));
    case Turn::Outcome::unanswered:
      return "the service at " + service.address + " ended the call without an answer";
    case Turn::Outcome::timedOut:
      return plainText(sentence("the service at " + service.address + " does not answer", message,
                                "check the address, or allow more with --timeout"));
    case Turn::Outcome::interrupted:
    case Turn::Outcome::noAudio: break;
  }
  return plainText(message);
}

}  // namespace velmora
