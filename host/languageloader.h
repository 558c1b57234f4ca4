#ifndef LANGUAGELOADER_H
#define LANGUAGELOADER_H

#include <QLocale>
#include <QObject>
#include <QString>
#include <QStringList>

class QTranslator;

// Installs the translators of one language: the host's own texts, Qt's
// (dialog buttons, command line errors) and the device plug-in's. Every one
// must be installed before the first widget or dictionary that shows them is
// built, since Qt translates a text when it is set, not when it is shown.
// The translators live as long as the loader.
class LanguageLoader : public QObject
{
    Q_OBJECT

public:
    // language: a locale name such as "zh_CN", "en" for the source texts,
    // or empty for the system's locale (LANG, LC_ALL, LC_MESSAGES).
    explicit LanguageLoader(const QString &language = QString(), QObject *parent = nullptr);

    QLocale locale() const { return m_locale; }
    // True when the texts stay the English source texts: nothing to load.
    bool isSourceLanguage() const;

    // The host's texts (:/translations/orvek-host_<lang>.qm, built into
    // orvek-host) and, when those exist, Qt's from its translations folder.
    // Returns how many catalogues were installed.
    int installHostTexts();
    // The plug-in's texts, from the resources the plug-in library brings
    // along (:/translations/orvek_<lang>.qm): call after it is loaded.
    bool installPluginTexts();
    // One catalogue <name>_<lang>.qm from folder (a resource path or a folder).
    bool install(const QString &name, const QString &folder);

    // The files installed, in order (for the log and the tests).
    QStringList installedFiles() const { return m_files; }

    static constexpr const char *kResourceFolder = ":/translations";
    static constexpr const char *kPluginCatalogue = "orvek";
    static constexpr const char *kHostCatalogue = "orvek-host";

private:
    QLocale m_locale;
    QStringList m_files;
};

#endif // LANGUAGELOADER_H
