// The Chinese translation: the .ts files complete and current with the code,
// the catalogues reachable where the host looks for them, and the device view
// and the host window built in Chinese with the device's own data unchanged.

#include <QtTest>
#include <QtWidgets>

#include "childform.h"
#include "energyline.h"
#include "energylinegeometry.h"
#include "hostoptions.h"
#include "hosttestsupport.h"
#include "languageloader.h"
#include "mainwindow.h"
#include "rteventform.h"
#include "viewsampledata.h"

namespace {

const QString kTranslationsDir = QStringLiteral(ORVEK_SOURCE_DIR "/translations");
constexpr int kLupdateTimeoutMs = 120000;

struct TsMessage
{
    QString context;
    QString source;
    QString type;              // of the translation element: empty when finished
    QStringList translations;  // the text, or each plural form
    bool numerus = false;
};

QList<TsMessage> readTs(const QString &path, QString *error)
{
    QList<TsMessage> messages;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return messages;
    }
    QXmlStreamReader xml(&file);
    QString context;
    TsMessage message;
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        const QStringRef name = xml.name();
        if (name == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (name == QLatin1String("message")) {
            message = TsMessage();
            message.context = context;
            message.numerus = xml.attributes().value(QLatin1String("numerus")) == QLatin1String("yes");
        } else if (name == QLatin1String("source")) {
            message.source = xml.readElementText();
        } else if (name == QLatin1String("translation")) {
            message.type = xml.attributes().value(QLatin1String("type")).toString();
            if (message.numerus) {
                while (xml.readNextStartElement())
                    message.translations << xml.readElementText();
            } else {
                message.translations << xml.readElementText();
            }
            messages << message;
        }
    }
    if (xml.hasError())
        *error = xml.errorString();
    return messages;
}

// Argument markers of a text: %1..%99, their %L forms and %n, each once.
QStringList markers(const QString &text)
{
    static const QRegularExpression marker(QStringLiteral("%L?(\\d{1,2}|n)"));
    QStringList found;
    auto it = marker.globalMatch(text);
    while (it.hasNext()) {
        const QString m = it.next().captured();
        if (!found.contains(m))
            found << m;
    }
    found.sort();
    return found;
}

bool hasChinese(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() >= 0x4E00 && c.unicode() <= 0x9FFF)
            return true;
    }
    return false;
}

QSet<QString> keys(const QList<TsMessage> &messages)
{
    QSet<QString> set;
    for (const TsMessage &m : messages)
        set << m.context + QLatin1String(" | ") + m.source;
    return set;
}

// Every text the view shows from the device itself: numbers with their units
// and the identity blocks. None of it is translated.
QStringList dataTexts(const Energyline &diagram)
{
    return {diagram.inputVoltage(),   diagram.inputFrequency(), diagram.bypassVoltage(), diagram.outputVoltage(),
            diagram.outputCurrent(),  diagram.outputPower(),    diagram.outputLoad(),    diagram.batteryVoltage(),
            diagram.batteryCapacity(), diagram.batteryRemainTime(), diagram.deviceType(), diagram.manufacturer()};
}

QStringList tabTexts(const QTabWidget *tabs)
{
    QStringList texts;
    for (int tab = 0; tab < tabs->count(); ++tab)
        texts << tabs->tabText(tab);
    return texts;
}

QStringList listedAlarms(const RTEventForm *form)
{
    const auto *table = form->findChild<QTableWidget *>(QStringLiteral("basicTable"));
    QStringList texts;
    for (int row = 0; table && row < table->rowCount(); ++row)
        texts << (table->item(row, 1) ? table->item(row, 1)->text() : QString());
    return texts;
}

QStringList headerTexts(const QTreeWidget *tree)
{
    QStringList texts;
    for (int column = 0; tree && column < tree->columnCount(); ++column)
        texts << tree->headerItem()->text(column);
    return texts;
}

} // namespace

class TestTranslations : public QObject
{
    Q_OBJECT

private slots:
    void tsFileComplete_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("plug-in") << QStringLiteral("orvek_zh_CN.ts");
        QTest::newRow("host") << QStringLiteral("orvek-host_zh_CN.ts");
    }

    void tsFileComplete()
    {
        QFETCH(QString, file);
        QString error;
        const QList<TsMessage> messages = readTs(kTranslationsDir + QLatin1Char('/') + file, &error);
        QVERIFY2(error.isEmpty(), qPrintable(error));
        QVERIFY(messages.size() > 100);
        QStringList problems;
        for (const TsMessage &m : messages) {
            const QString where = m.context + QLatin1String(": ") + m.source;
            if (!m.type.isEmpty())
                problems << m.type + QLatin1String(" ") + where;
            // Chinese has one plural form.
            if (m.translations.size() != 1 || m.translations.first().isEmpty()) {
                problems << QLatin1String("no single translation ") + where;
                continue;
            }
            if (markers(m.translations.first()) != markers(m.source))
                problems << QLatin1String("markers differ ") + where;
            if (m.source.count(QLatin1Char('\n')) > 0 && m.translations.first().count(QLatin1Char('\n')) == 0)
                problems << QLatin1String("line breaks lost ") + where;
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(QLatin1Char('\n'))));
    }

    // A text added to the code without refreshing the .ts files would show
    // in English; one removed would linger as an unused translation.
    void tsFilesCurrent()
    {
        const QString lupdate = QStandardPaths::findExecutable(QStringLiteral("lupdate"));
        if (lupdate.isEmpty())
            QSKIP("lupdate (qttools5-dev-tools) is not installed");
        QTemporaryDir fresh;
        QVERIFY(fresh.isValid());
        QProcess update;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("TS_DIR"), fresh.path());
        update.setProcessEnvironment(env);
        update.setProcessChannelMode(QProcess::MergedChannels);
        update.start(QStringLiteral("bash"),
                     {QStringLiteral(ORVEK_SOURCE_DIR "/tools/update-translations.sh"), QStringLiteral("zh_CN")});
        QVERIFY(update.waitForFinished(kLupdateTimeoutMs));
        QVERIFY2(update.exitStatus() == QProcess::NormalExit && update.exitCode() == 0,
                 update.readAll().constData());

        for (const QString &file : {QStringLiteral("orvek_zh_CN.ts"), QStringLiteral("orvek-host_zh_CN.ts")}) {
            QString error;
            const QSet<QString> ours = keys(readTs(kTranslationsDir + QLatin1Char('/') + file, &error));
            QVERIFY2(error.isEmpty(), qPrintable(error));
            const QSet<QString> code = keys(readTs(fresh.filePath(file), &error));
            QVERIFY2(error.isEmpty(), qPrintable(error));
            QVERIFY(!code.isEmpty());
            const QStringList missing = QSet<QString>(code).subtract(ours).values();
            const QStringList unused = QSet<QString>(ours).subtract(code).values();
            QVERIFY2(missing.isEmpty(), qPrintable(file + QLatin1String(" lacks:\n") + missing.join('\n')));
            QVERIFY2(unused.isEmpty(), qPrintable(file + QLatin1String(" has unused:\n") + unused.join('\n')));
        }
    }

    void languageOption_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("language");
        QTest::newRow("locale") << QStringList() << QString();
        QTest::newRow("zh_CN") << QStringList{"--lang", "zh_CN"} << QStringLiteral("zh_CN");
        QTest::newRow("English") << QStringList{"--lang=en", "--headless"} << QStringLiteral("en");
        // The help is printed in the language asked for.
        QTest::newRow("with help") << QStringList{"--help", "--lang", "zh_CN"} << QStringLiteral("zh_CN");
    }

    void languageOption()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, language);
        const HostOptions options = HostOptions::parse(QStringList{QStringLiteral("orvek-host")} + arguments);
        QVERIFY2(options.ok, qPrintable(options.error));
        QCOMPARE(options.language, language);
    }

    void loaderInstalls_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("expectedFiles"); // file names, in installing order
        QTest::newRow("zh_CN") << QStringLiteral("zh_CN")
                               << QStringList{"orvek-host_zh_CN.qm", "qtbase_zh_CN.qm", "orvek_zh_CN.qm"};
        QTest::newRow("English source texts") << QStringLiteral("en") << QStringList();
        // No catalogue of the host: Qt's alone would mix languages.
        QTest::newRow("no catalogue") << QStringLiteral("de_DE") << QStringList();
    }

    void loaderInstalls()
    {
        QFETCH(QString, language);
        QFETCH(QStringList, expectedFiles);
        if (expectedFiles.contains(QStringLiteral("qtbase_zh_CN.qm"))
            && !QFile::exists(QLibraryInfo::location(QLibraryInfo::TranslationsPath) + "/qtbase_zh_CN.qm"))
            QSKIP("Qt's own Chinese texts (qttranslations5-l10n) are not installed");
        const QString before = QCoreApplication::translate("ChildForm", "Control");
        QStringList files;
        {
            LanguageLoader loader(language);
            loader.installHostTexts();
            loader.installPluginTexts();
            for (const QString &path : loader.installedFiles())
                files << QFileInfo(path).fileName();
            QCOMPARE(files, expectedFiles);
            const QString translated = QCoreApplication::translate("ChildForm", "Control");
            QCOMPARE(hasChinese(translated), !expectedFiles.isEmpty());
            QCOMPARE(hasChinese(QCoreApplication::translate("MainWindow", "Device")), !expectedFiles.isEmpty());
        }
        // The translators go with the loader.
        QCOMPARE(QCoreApplication::translate("ChildForm", "Control"), before);
    }

    // The diagram's titles are translated while painting, in its own context:
    // each must be in the plug-in's catalogue under that context.
    void diagramTitlesTranslated()
    {
        QTranslator plugin;
        QVERIFY(plugin.load(QStringLiteral(":/translations/orvek_zh_CN.qm")));
        QStringList untranslated;
        for (int block = 0; block < EnergylineGeometry::BlockCount; ++block) {
            const char *title = EnergylineGeometry::blockTitle(EnergylineGeometry::Part(block));
            if (!hasChinese(plugin.translate("Energyline", title)))
                untranslated << QString::fromLatin1(title);
        }
        // The device panel keeps the name UPS.
        for (int panel = 0; panel < EnergylineGeometry::PanelCount; ++panel) {
            const char *title = EnergylineGeometry::panelTitle(EnergylineGeometry::Panel(panel));
            if (plugin.translate("Energyline", title).isEmpty())
                untranslated << QString::fromLatin1(title);
        }
        QVERIFY2(untranslated.isEmpty(), qPrintable(untranslated.join(QLatin1String(", "))));
    }

    void deviceViewInChinese_data()
    {
        QTest::addColumn<bool>("threePhase");
        QTest::newRow("single-phase") << false;
        QTest::newRow("three-phase") << true;
    }

    void deviceViewInChinese()
    {
        QFETCH(bool, threePhase);
        const QMap<int, QVariant> data = ViewSampleData::deviceData(threePhase);
        // The alarm page lists on a refresh, the diagram takes the data when
        // its tab comes up.
        const auto fill = [&data](ChildForm &form) {
            form.flushData(data);
            form.tabs()->setCurrentIndex(ChildForm::AlarmTab);
            form.refreshData();
            form.tabs()->setCurrentIndex(ChildForm::EnergyTab);
        };

        ChildForm english;
        fill(english);
        const QStringList englishTabs = tabTexts(english.tabs());
        const QStringList englishAlarms = listedAlarms(english.alarmPage);
        QVERIFY(!englishAlarms.isEmpty());

        LanguageLoader loader(QStringLiteral("zh_CN"));
        QVERIFY(loader.installPluginTexts());
        ChildForm chinese;
        fill(chinese);

        const QStringList tabs = tabTexts(chinese.tabs());
        QCOMPARE(tabs.size(), englishTabs.size());
        for (const QString &tab : tabs)
            QVERIFY2(hasChinese(tab), qPrintable(tab));

        const QStringList alarms = listedAlarms(chinese.alarmPage);
        QCOMPARE(alarms.size(), englishAlarms.size());
        for (int row = 0; row < alarms.size(); ++row) {
            QVERIFY2(hasChinese(alarms.at(row)), qPrintable(alarms.at(row)));
            QCOMPARE(alarms.at(row),
                     QCoreApplication::translate("RTEventForm", englishAlarms.at(row).toUtf8().constData()));
        }

        // Code texts are ours, the measured values and identity texts the device's.
        QVERIFY2(hasChinese(chinese.energyPage->outputSource()), qPrintable(chinese.energyPage->outputSource()));
        QVERIFY2(hasChinese(chinese.energyPage->batteryStatus()), qPrintable(chinese.energyPage->batteryStatus()));
        QCOMPARE(dataTexts(*chinese.energyPage), dataTexts(*english.energyPage));
        QVERIFY(chinese.energyPage->manufacturer().startsWith(QLatin1String("Example Power")));
    }

    void hostWindowInChinese()
    {
        ScriptedHost english;
        MainWindow englishWindow(&english.host);
        const QStringList englishHeaders =
            headerTexts(englishWindow.findChild<QTreeWidget *>(QStringLiteral("deviceTree")));
        QCOMPARE(englishHeaders.value(0), QStringLiteral("Device"));

        LanguageLoader loader(QStringLiteral("zh_CN"));
        QVERIFY(loader.installHostTexts() >= 1);
        ScriptedHost h;
        MainWindow window(&h.host);
        for (const QString &tree : {QStringLiteral("deviceTree"), QStringLiteral("eventTable")}) {
            const QStringList headers = headerTexts(window.findChild<QTreeWidget *>(tree));
            QVERIFY2(!headers.isEmpty(), qPrintable(tree));
            for (const QString &header : headers)
                QVERIFY2(hasChinese(header), qPrintable(tree + QLatin1String(": ") + header));
        }
        QVERIFY(hasChinese(window.windowTitle()));
    }
};

QTEST_MAIN(TestTranslations)
#include "tst_translations.moc"
