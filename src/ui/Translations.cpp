// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: Apache-2.0
#include "ui/Translations.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace velmora {
namespace {

constexpr QLatin1String kOurs("velmora");

bool install(const QLocale &locale, const QString &name, const QString &folder) {
  // Belongs to the application, and goes with it.
  auto *translator = new QTranslator(QCoreApplication::instance());
  translator->setObjectName(name);
  return translator->load(locale, name, QStringLiteral("_"), folder) &&
         QCoreApplication::installTranslator(translator);
}

}  // namespace

bool installTranslations(const QLocale &locale) {
  // For what is not translated here: numbers, dates, and what pages are asked for in.
  QLocale::setDefault(locale);
  // Ours comes last, and so is asked first.
  install(locale, QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
  return install(locale, kOurs, QStringLiteral(":/translations"));
}

QStringList interfaceLanguages() {
  QStringList codes{QStringLiteral("en")};
  for (const QString &file : QDir(QStringLiteral(":/translations")).entryList())
    codes << QFileInfo(file).completeBaseName().section(QLatin1Char('_'), 1);
  return codes;
}

QString interfaceLanguage() {
  const auto *ours = QCoreApplication::instance()->findChild<QTranslator *>(kOurs);
  return ours && !ours->isEmpty() ? QLocale::languageToCode(QLocale(ours->language()).language())
                                  : QStringLiteral("en");
}

}  // namespace velmora
