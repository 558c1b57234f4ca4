#include "languageloader.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include "hostlogging.h"

namespace {

// Qt's own catalogue for the widgets' standard texts.
constexpr const char *kQtCatalogue = "qtbase";

} // namespace

LanguageLoader::LanguageLoader(const QString &language, QObject *parent)
    : QObject(parent)
    , m_locale(language.isEmpty() ? QLocale::system() : QLocale(language))
{
}

bool LanguageLoader::isSourceLanguage() const
{
    return m_locale.language() == QLocale::English || m_locale.language() == QLocale::C;
}

int LanguageLoader::installHostTexts()
{
    // Qt's texts only along with the host's: a dialog half in a language the
    // host does not speak helps nobody.
    if (!install(QLatin1String(kHostCatalogue), QLatin1String(kResourceFolder)))
        return 0;
    return install(QLatin1String(kQtCatalogue), QLibraryInfo::location(QLibraryInfo::TranslationsPath)) ? 2 : 1;
}

bool LanguageLoader::installPluginTexts()
{
    return install(QLatin1String(kPluginCatalogue), QLatin1String(kResourceFolder));
}

bool LanguageLoader::install(const QString &name, const QString &folder)
{
    if (isSourceLanguage())
        return false;
    auto *translator = new QTranslator(this);
    // Tries <name>_zh_CN.qm, then the broader <name>_zh.qm the locale allows.
    if (!translator->load(m_locale, name, QStringLiteral("_"), folder)) {
        qCDebug(lcHost) << "no" << name << "translation for" << m_locale.name() << "in" << folder;
        delete translator;
        return false;
    }
    if (!QCoreApplication::installTranslator(translator)) {
        delete translator;
        return false;
    }
    m_files << translator->filePath();
    qCDebug(lcHost) << "translation" << translator->filePath();
    return true;
}
