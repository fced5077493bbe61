// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "foundation/DefaultsFormat.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryFile>
#include <nlohmann/json.hpp>

#include "foundation/Log.h"

namespace velmora {
namespace {

using Json = nlohmann::json;

// A value that JSON has no type for is an object with one of these members.
constexpr auto kDate = "$date";              // ISO 8601, UTC, milliseconds
constexpr auto kData = "$data";              // base 64
constexpr auto kDictionary = "$dictionary";  // a dictionary that would read as one of these

// Far deeper than any setting; each level takes a piece of the stack when it is decoded.
constexpr int kDeepest = 100;

bool looksTagged(const QVariantMap &map) {
  return map.size() == 1 && map.firstKey().startsWith(QLatin1Char('$'));
}

Json encode(const QVariant &value);

Json encodeMap(const QVariantMap &map) {
  Json object = Json::object();
  for (auto it = map.begin(); it != map.end(); ++it) {
    Json member = encode(it.value());
    if (!member.is_null()) object[it.key().toStdString()] = std::move(member);
  }
  return object;
}

Json encodeList(const QVariantList &list) {
  Json array = Json::array();
  for (const QVariant &element : list) array.push_back(encode(element));
  return array;
}

Json encode(const QVariant &value) {
  switch (value.typeId()) {
    case QMetaType::Bool: return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong: return value.toLongLong();
    case QMetaType::Float:
    case QMetaType::Double: return value.toDouble();
    case QMetaType::QString: return value.toString().toStdString();
    case QMetaType::QByteArray: return Json{{kData, value.toByteArray().toBase64().toStdString()}};
    case QMetaType::QDateTime:
      return Json{{kDate, value.toDateTime().toUTC().toString(Qt::ISODateWithMs).toStdString()}};
    case QMetaType::QStringList:
    case QMetaType::QVariantList: return encodeList(value.toList());
    case QMetaType::QVariantMap: {
      Json object = encodeMap(value.toMap());
      return looksTagged(value.toMap()) ? Json{{kDictionary, std::move(object)}} : object;
    }
    default: return nullptr;
  }
}

QVariant decode(const Json &json);

QVariantMap decodeMap(const Json &object) {
  QVariantMap map;
  for (const auto &[key, member] : object.items()) map.insert(QString::fromStdString(key), decode(member));
  return map;
}

QVariant decodeObject(const Json &object) {
  if (object.size() == 1) {
    const std::string &tag = object.begin().key();
    const Json &content = object.begin().value();
    if (tag == kDictionary && content.is_object()) return decodeMap(content);
    if (content.is_string()) {
      const auto text = QByteArray::fromStdString(content.get<std::string>());
      if (tag == kData) return QByteArray::fromBase64(text);
      if (tag == kDate) return QDateTime::fromString(QString::fromUtf8(text), Qt::ISODateWithMs);
    }
  }
  return decodeMap(object);
}

QVariant decode(const Json &json) {
  switch (json.type()) {
    case Json::value_t::boolean: return json.get<bool>();
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned: return QVariant::fromValue(json.get<qlonglong>());
    case Json::value_t::number_float: return json.get<double>();
    case Json::value_t::string: return QString::fromStdString(json.get_ref<const std::string &>());
    case Json::value_t::object: return decodeObject(json);
    case Json::value_t::array: {
      QVariantList list;
      for (const Json &element : json) list.append(decode(element));
      return list;
    }
    default: return {};
  }
}

}  // namespace

QByteArray encodeDefaults(const QVariantMap &values) {
  // Text that is not Unicode is replaced rather than lost with the whole file.
  return QByteArray::fromStdString(encodeMap(values).dump(2, ' ', false, Json::error_handler_t::replace)) +
         '\n';
}

std::optional<QVariantMap> decodeDefaults(const QByteArray &text) {
  if (text.isEmpty()) return QVariantMap();
  bool tooDeep = false;
  const auto keep = [&](int depth, Json::parse_event_t /*event*/, const Json & /*value*/) {
    tooDeep = tooDeep || depth > kDeepest;
    return !tooDeep;
  };
  const Json json = Json::parse(text.begin(), text.end(), keep, false);
  if (tooDeep || !json.is_object()) return std::nullopt;
  return decodeMap(json);
}

void setAsideDamaged(const QString &file, const QByteArray &contents) {
  QTemporaryFile aside(file + QLatin1String(".damaged-XXXXXX"));
  aside.setAutoRemove(false);
  if (aside.open() && aside.write(contents) == contents.size() && aside.flush()) {
    log("The settings file ", file.toStdString(), " is damaged; it is kept as ",
        aside.fileName().toStdString(), " and the settings start afresh");
  } else {
    log("The settings file ", file.toStdString(),
        " is damaged and could not be set aside: ", aside.errorString().toStdString());
  }
}

}  // namespace velmora
