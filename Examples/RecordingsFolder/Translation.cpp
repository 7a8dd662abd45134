#include "Examples/RecordingsFolder/Translation.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace RecordingsFolder {
namespace {

void Install(QCoreApplication& application, const QLocale& language, const QString& name,
             const QString& folder)
{
    auto* const translator = new QTranslator(&application);
    if (translator->load(language, name, QStringLiteral("_"), folder))
        QCoreApplication::installTranslator(translator);
}

/// Where Qt's own catalogues are installed.
QString QtCatalogues()
{
    // Qt 6 renamed it, and warns about the old name.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#endif
}

bool HasCatalogue(const QLocale& language)
{
    QTranslator translator;
    return translator.load(language, QStringLiteral("RecordingsFolder"), QStringLiteral("_"),
                           QStringLiteral(":/translations"));
}

} // namespace

void InstallTranslations(QCoreApplication& application)
{
    for (const QString& name : QLocale::system().uiLanguages()) {
        const QLocale language(name);
        // The sources are in English, so it needs no catalogue, and precedes the user's second choice.
        if (language.language() == QLocale::English)
            return;
        if (HasCatalogue(language)) {
            Install(application, language, QStringLiteral("qtbase"), QtCatalogues());
            Install(application, language, QStringLiteral("RecordingsFolder"),
                    QStringLiteral(":/translations"));
            return;
        }
    }
}

} // namespace RecordingsFolder
