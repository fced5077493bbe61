// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/Deployment.h"

#include <QStandardPaths>
#include <QString>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <system_error>

#include "foundation/Endpoint.h"

namespace velmora {
namespace {

using Json = nlohmann::json;

std::string text(const Json &object, const char *member, const std::filesystem::path &file) {
  const auto found = object.find(member);
  if (found == object.end()) return {};
  if (!found->is_string()) {
    throw DeploymentError(file.string() + ": \"" + member + "\" must be a text");
  }
  return found->get<std::string>();
}

/// A page for people, who will open it with one click.
std::string link(const Json &links, const char *member, const std::filesystem::path &file) {
  std::string address = text(links, member, file);
  if (address.empty() || address.starts_with("https://") || address.starts_with("http://")) return address;
  throw DeploymentError(file.string() + ": \"" + member + "\" must be an address with https:// or http://");
}

DeploymentLinks linksOf(const Json &object, const std::filesystem::path &file) {
  const auto found = object.find("links");
  if (found == object.end()) return {};
  if (!found->is_object()) throw DeploymentError(file.string() + ": \"links\" must be a JSON object");
  return {.forum = link(*found, "forum", file),
          .fanPage = link(*found, "fan_page", file),
          .microblog = link(*found, "microblog", file),
          .home = link(*found, "home", file)};
}

std::optional<std::uint16_t> portOf(const Json &object, const std::filesystem::path &file) {
  const auto found = object.find("port");
  if (found == object.end()) return std::nullopt;
  const std::int64_t number = found->is_number_integer() ? found->get<std::int64_t>() : 0;
  if (number < 1 || number > 65535) {
    throw DeploymentError(file.string() + ": \"port\" must be a number from 1 to 65535");
  }
  return static_cast<std::uint16_t>(number);
}

}  // namespace

Deployment Deployment::load(const std::filesystem::path &folder) {
  const std::filesystem::path file = folder / "deployment.json";
  std::string contents;
  try {
    contents = readFile(file);
  } catch (const std::system_error &error) {
    const bool missing = error.code() == std::errc::no_such_file_or_directory;
    throw DeploymentError((missing ? folder.string() + " is no deployment folder: " : "") + error.what());
  } catch (const std::runtime_error &error) {
    throw DeploymentError(error.what());
  }
  const Json json = Json::parse(contents, nullptr, false);
  if (!json.is_object()) throw DeploymentError(file.string() + ": not a JSON object");
  Deployment deployment{.folder = folder,
                        .host = text(json, "host", file),
                        .port = portOf(json, file),
                        .scope = text(json, "scope", file),
                        .loopbackPrefix = text(json, "loopback_prefix", file),
                        .links = linksOf(json, file)};
  if (deployment.host.empty()) throw DeploymentError(file.string() + ": \"host\" is missing");
  const auto endpoint = Endpoint::parse(deployment.host);
  if (!endpoint || endpoint->port) {
    throw DeploymentError(file.string() + ": \"host\" must be a name or an IP address without a port, not '" +
                          deployment.host + "'");
  }
  deployment.host = endpoint->host;
  return deployment;
}

std::optional<std::filesystem::path> Deployment::configuredFolder(
    const std::optional<std::filesystem::path> &named) {
  if (named) return named;
  if (const char *variable = std::getenv("VELMORA_DEPLOYMENT"); variable && *variable) return variable;
  const std::filesystem::path config =
      QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString();
  const std::filesystem::path folder = config / "velmora" / "deployment";
  std::error_code ignored;
  if (std::filesystem::is_directory(folder, ignored)) return folder;
  return std::nullopt;
}

std::filesystem::path Deployment::resource(std::string_view name, std::string_view type) const {
  return folder / (std::string(name) + '.' + std::string(type));
}

std::string Deployment::address() const { return Endpoint{.host = host, .port = port}.address(); }

}  // namespace velmora
