// orvek-screenshots [--lang LANG] [FOLDER]: renders the pictures of the README
// into FOLDER (default: docs/screenshots of the source tree). With a language
// the device view and the host window are rendered in it, as <name>-LANG.png.

#include <QApplication>
#include <QCommandLineParser>
#include <QFont>
#include <QLoggingCategory>
#include <QTextStream>

#include "hostwindowscene.h"
#include "languageloader.h"
#include "screenshotwriter.h"
#include "widgetscenes.h"

Q_LOGGING_CATEGORY(lcScreenshots, "orvek.screenshots")

namespace {

// The offscreen platform defaults to a 12 pt font; desktops use about 9 pt.
constexpr int kDesktopFontPointSize = 9;

void useDesktopFont()
{
    QFont font = QApplication::font();
    font.setPointSize(kDesktopFontPointSize);
    QApplication::setFont(font);
}

} // namespace

int main(int argc, char *argv[])
{
    // Pictures need no display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvek-screenshots"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QCoreApplication::translate("main", "Renders the views, charts and the host window with simulated UPS data."));
    parser.addHelpOption();
    const QCommandLineOption lang(QStringLiteral("lang"),
                                  QCoreApplication::translate("main", "Render the device view and the host window "
                                                                      "in LANG (e.g. zh_CN)."),
                                  QStringLiteral("LANG"));
    parser.addOption(lang);
    parser.addPositionalArgument(QStringLiteral("FOLDER"),
                                 QCoreApplication::translate("main", "Where to write the PNG files (default: %1).")
                                     .arg(QStringLiteral(ORVEK_DEFAULT_SCREENSHOT_DIR)),
                                 QStringLiteral("[FOLDER]"));
    parser.process(app);
    const QStringList positional = parser.positionalArguments();
    if (positional.size() > 1)
        parser.showHelp(2);

    ScreenshotWriter writer(positional.value(0, QStringLiteral(ORVEK_DEFAULT_SCREENSHOT_DIR)));
    if (!writer.prepare()) {
        qCCritical(lcScreenshots) << "cannot create" << positional.value(0);
        return 1;
    }
    // Widgets keep the font they were created with: set it before any is made.
    useDesktopFont();
    const QString language = parser.value(lang);
    if (language.isEmpty()) {
        WidgetScenes(writer).renderAll();
        HostWindowScene(writer).render();
    } else {
        // The plug-in is linked in, so its catalogue is there from the start.
        LanguageLoader languages(language);
        if (languages.installHostTexts() == 0 || !languages.installPluginTexts()) {
            qCCritical(lcScreenshots) << "no translation for" << language;
            return 1;
        }
        writer.setFileSuffix(QLatin1Char('-') + language);
        WidgetScenes(writer).deviceTabs();
        HostWindowScene(writer).render();
    }

    QTextStream out(stdout);
    for (const QString &path : writer.written())
        out << QCoreApplication::translate("main", "wrote %1").arg(path) << '\n';
    for (const QString &what : writer.failed())
        qCCritical(lcScreenshots).noquote() << "failed:" << what;
    return writer.failed().isEmpty() ? 0 : 1;
}
