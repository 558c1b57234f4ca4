// The host's building blocks without a network: dev.ini groups, console
// commands, event texts, log files, identity texts, state colours and
// plug-in discovery.
#include <QtTest>

#include "collectthread.h"
#include "consolecommand.h"
#include "deviceconfig.h"
#include "devicesession.h"
#include "eventformatter.h"
#include "hosttestsupport.h"
#include "logwriter.h"
#include "mainwindow.h"
#include "orvekclient.h"
#include "pluginhost.h"

using Kind = ConsoleCommand::Kind;
Q_DECLARE_METATYPE(ConsoleCommand::Kind)

class TestHostUnits : public QObject
{
    Q_OBJECT

private slots:
    void configSaveAndReadBack();
    void consoleCommand_data();
    void consoleCommand();
    void eventTextFromUntrustedMaps();
    void logFiles();
    void identityAndAlarmsFromUntrustedData();
    void stateColours();
    void pluginFolders();
};

void TestHostUnits::configSaveAndReadBack()
{
    QCOMPARE(DeviceConfig::defaultPath(), OrvekClient::configFilePath()); // where the plug-in reads
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("db/dev.ini"));
    DeviceConfig config(path);
    DeviceEntry entry{QStringLiteral("ups 1"), QStringLiteral("127.0.0.5"), 1502, 2, -1, 60, QString()};
    QVERIFY(config.save(entry));
    {
        // A key the host does not manage, and a group that is no device.
        QSettings settings(path, QSettings::IniFormat);
        settings.setValue(QStringLiteral("ups 1/eventChooseList/3"), 1);
        settings.setValue(QStringLiteral("notes/text"), QStringLiteral("no address"));
    }
    // Update: a new port, retries left out (kept), protocol set.
    entry.port = 1503;
    entry.retries = -1;
    entry.protocol = 2;
    QVERIFY(config.save(entry));
    QCOMPARE(config.devices().size(), 1);
    const DeviceEntry a = config.device(QStringLiteral("ups 1"));
    QCOMPARE(QList<int>({a.port, a.retries, a.protocol, a.interval}), QList<int>({1503, 2, 2, 60}));
    QSettings settings(path, QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("ups 1/eventChooseList/3")).toInt(), 1);

    // Names that are no group name, no address, ports out of range, values
    // that QSettings would write escaped (the file could then not be read).
    const QList<DeviceEntry> rejected = {{QStringLiteral("a/b"), QStringLiteral("127.0.2.1"), 502, -1, -1, -1, {}},
                                         {QStringLiteral("c"), QStringLiteral("  "), 502, -1, -1, -1, {}},
                                         {QStringLiteral("d"), QStringLiteral("127.0.2.1"), 65536, -1, -1, -1, {}},
                                         {QStringLiteral("e"), QStringLiteral("127.0.\"2.1"), 502, -1, -1, -1, {}},
                                         {QStringLiteral("f"), QStringLiteral("h\x01st"), 502, -1, -1, -1, {}},
                                         {QStringLiteral("g"), QStringLiteral("::1"), 502, -1, -1, -1, "@Variant"}};
    for (const DeviceEntry &bad : rejected) {
        QString error;
        QVERIFY(!config.save(bad, &error));
        QVERIFY(!error.isEmpty());
    }
    QCOMPARE(config.devices().size(), 1);
}

void TestHostUnits::consoleCommand_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("devices");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("device");
    QTest::addColumn<int>("controlId");
    QTest::addColumn<QString>("value");

    const QStringList one{"ups1"};
    const QStringList two{"ups1", "ups2"};
    QTest::newRow("any case, blanks") << "  SelfTest  " << one << Kind::Control << "ups1" << 1003 << "";
    QTest::newRow("buzzer off") << "buzzer OFF" << one << Kind::Control << "ups1" << 1014 << "0";
    QTest::newRow("status") << "status" << two << Kind::Status << "" << 0 << "";
    QTest::newRow("several devices, no prefix") << "selftest" << two << Kind::Invalid << "" << 0 << "";
    QTest::newRow("unknown device") << "ups9 selftest" << two << Kind::Invalid << "" << 0 << "";
    QTest::newRow("shutdown negative") << "shutdown -5" << one << Kind::Invalid << "" << 0 << "";
}

void TestHostUnits::consoleCommand()
{
    QFETCH(QString, line);
    QFETCH(QStringList, devices);
    QFETCH(Kind, kind);
    const ConsoleCommand c = ConsoleCommand::parse(line, devices, QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9)));
    QCOMPARE(c.kind, kind);
    QCOMPARE(c.error.isEmpty(), kind != Kind::Invalid);
    if (kind != Kind::Control)
        return;
    QTEST(c.device, "device");
    QTEST(c.controlId, "controlId");
    QTEST(c.value, "value");
}

void TestHostUnits::eventTextFromUntrustedMaps()
{
    OrvekClient dictionary;
    const QStringList texts = dictionary.getEventLogDesc();
    auto text = [&texts](int type, const QVariantMap &map) { return EventFormatter::text(type, map, texts); };
    // Cleared alarms index the second half of the texts; ids without a text are named.
    QCOMPARE(text(2006, {{"alarmId", 79}, {"alarmState", 0}}), QStringLiteral("Alarm 25 cleared"));
    QCOMPARE(text(2006, {{"alarmId", 5000}, {"alarmState", 0}}), QStringLiteral("Alarm 4946 cleared"));
    QCOMPARE(text(2006, {{"alarmState", 1}}), QStringLiteral("Alarm changed"));
    QCOMPARE(text(3100, {{"desc", "something"}}), QStringLiteral("something"));
}

void TestHostUnits::logFiles()
{
    QTemporaryDir dir;
    LogWriter logs(dir.filePath(QStringLiteral("logs"))); // made on first use
    const QStringList header{"Input voltage(V)", "Output voltage(V)"};
    const QDate day1(2024, 2, 28);
    // Data rows: a file per device and day, each with its header; fields with
    // commas, quotes and blanks at the ends are quoted.
    QVERIFY(logs.writeDataRow(QDateTime(day1, QTime(23, 59, 58)), "../1", header, {" say \"hi\"", "230/229,231"}));
    QVERIFY(logs.writeDataRow(QDateTime(day1.addDays(1), QTime(0, 0, 1)), "../1", header, {"0", "0"}));
    // Device names become parts of file names: no folders, no hidden files.
    QCOMPARE(QFileInfo(logs.dataFilePath("../1", day1)).fileName(), QStringLiteral("data-_._1-2024-02-28.csv"));
    QCOMPARE(HostTest::fileLines(logs.dataFilePath("../1", day1)),
             (QStringList{"time,Input voltage(V),Output voltage(V)",
                          "2024-02-28 23:59:58,\" say \"\"hi\"\"\",\"230/229,231\""}));
    QCOMPARE(HostTest::fileLines(logs.dataFilePath("../1", day1.addDays(1))).size(), 2);

    // Events: one line per event, tabs and line breaks taken out of the fields.
    const QDateTime time(QDate(2024, 1, 2), QTime(3, 4, 5));
    QVERIFY(logs.writeEvent(time, "ups\t1", 1042, "text with\ta tab\nand a line break"));
    QVERIFY(logs.writeEvent(time.addDays(1), "ups1", 1041, "Communication lost"));
    QCOMPARE(QFileInfo(logs.eventFilePath(time.date())).fileName(), QStringLiteral("events-2024-01-02.log"));
    QCOMPARE(HostTest::fileLines(logs.eventFilePath(time.date())),
             QStringList{"2024-01-02 03:04:05\tups 1\t1042\ttext with a tab and a line break"});
    QCOMPARE(HostTest::fileLines(logs.eventFilePath(time.date().addDays(1))).size(), 1);
}

void TestHostUnits::identityAndAlarmsFromUntrustedData()
{
    QByteArray padded("Tower 11 3kVA");
    padded.resize(64); // NUL padded like the agent's registers
    QCOMPARE(DeviceSession::identityText(padded), QStringLiteral("Tower 11 3kVA"));
    QCOMPARE(DeviceSession::identityText(QByteArray("A\x01" "B\x7f")), QStringLiteral("A B"));
    QCOMPARE(DeviceSession::identityText(QByteArray(200, 'x')), QString(64, QLatin1Char('x')));
    QCOMPARE(DeviceSession::identityText(QStringList{"a", "b"}), QString());

    // Only the value 1 on 2000..2026 counts as an active alarm.
    QVERIFY(DeviceSession::alarmsActive({{2026, 1}}));
    QVERIFY(!DeviceSession::alarmsActive({{2027, 1}, {1999, 1}}));
    QVERIFY(!DeviceSession::alarmsActive({{2005, 7}, {2006, QStringLiteral("x")}}));
}

void TestHostUnits::stateColours()
{
    auto colour = [](DeviceStatus::State state, bool alarm) {
        DeviceStatus s;
        s.state = state;
        s.alarmActive = alarm;
        return MainWindow::stateColour(s);
    };
    const QColor lost = colour(DeviceStatus::State::Lost, false);
    QCOMPARE(colour(DeviceStatus::State::Unknown, false).hsvSaturation(), 0);             // grey
    QVERIFY(qAbs(colour(DeviceStatus::State::Communicating, false).hsvHue() - 120) < 25); // green
    QVERIFY(qAbs(colour(DeviceStatus::State::Communicating, true).hsvHue() - 33) < 12);  // orange
    QVERIFY(lost.hsvHue() < 10 || lost.hsvHue() > 350);                                    // red
    QCOMPARE(colour(DeviceStatus::State::Lost, true), lost); // lost, whatever the last data said
}

void TestHostUnits::pluginFolders()
{
    PluginHost plugins;
    QCOMPARE(plugins.loadFolder(builtBinaryDir()), 1);
    QCOMPARE(plugins.classNames(), QStringList{QStringLiteral("OrvekClient")});
    QVERIFY(qobject_cast<OrvekClient *>(plugins.factory()));
    QCOMPARE(plugins.factory(QStringLiteral("OrvekClient")), plugins.factory());
    QVERIFY(!plugins.factory(QStringLiteral("SomeOtherClient")));
    QCOMPARE(plugins.loadFolder(builtBinaryDir()), 1); // nothing added twice

    // A library that is no plug-in, and a file that only looks like one.
    QTemporaryDir dir;
    const QString contract = builtBinaryDir() + QStringLiteral("/libCollectContract.so");
    QVERIFY(QFile::copy(contract, dir.filePath(QStringLiteral("libCollectContract.so"))));
    QFile junk(dir.filePath(QStringLiteral("libjunk.so")));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write(QByteArray(4096, '\x7f'));
    junk.close();
    PluginHost none;
    QCOMPARE(none.loadFolder(dir.path()), 0);
    QVERIFY(!none.factory());
    QCOMPARE(none.loadFolder(dir.filePath(QStringLiteral("missing"))), 0);
}

QTEST_MAIN(TestHostUnits)
#include "tst_host_units.moc"
