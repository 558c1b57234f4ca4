// The host's building blocks without a network: dev.ini groups, endpoint and
// command-line parsing, console commands, event texts, log files, identity
// texts, state colours and plug-in discovery.
#include <QtTest>

#include "collectthread.h"
#include "consolecommand.h"
#include "deviceconfig.h"
#include "devicesession.h"
#include "eventformatter.h"
#include "hostoptions.h"
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
    void configPathIsWhereThePluginReads();
    void configSaveAndReadBack();
    void parseEndpoint_data();
    void parseEndpoint();
    void options_data();
    void options();
    void consoleCommand_data();
    void consoleCommand();
    void eventTextFromUntrustedMaps();
    void dataLogRollsOverByDay();
    void eventLogOneLinePerEvent();
    void identityAndAlarmsFromUntrustedData();
    void stateColours();
    void pluginDiscovery();
    void pluginFolderWithoutDevicePlugins();
};

void TestHostUnits::configPathIsWhereThePluginReads()
{
    QCOMPARE(DeviceConfig::defaultPath(), OrvekClient::configFilePath());
    const DeviceConfig config;
    QCOMPARE(config.logFolder(), QFileInfo(OrvekClient::configFilePath()).absolutePath() + QStringLiteral("/logs"));
}

void TestHostUnits::configSaveAndReadBack()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("db/dev.ini"));
    DeviceConfig config(path);

    const DeviceEntry first{QStringLiteral("ups 1"), QStringLiteral("127.0.0.5"), 1502, 2, -1, 60, QString()};
    QVERIFY(config.save(first));
    QVERIFY(config.save(
        {QStringLiteral("rack-b"), QStringLiteral("::1"), 502, -1, -1, -1, QStringLiteral("OrvekClient")}));
    {
        // Keys the host does not manage, and a group that is no device.
        QSettings settings(path, QSettings::IniFormat);
        settings.setValue(QStringLiteral("ups 1/eventChooseList/3"), 1);
        settings.setValue(QStringLiteral("notes/text"), QStringLiteral("no address"));
        settings.setValue(QStringLiteral("half/ipAddr"), QStringLiteral("127.0.0.9"));
    }

    // Update: a new port, retries left out (kept), protocol set.
    DeviceEntry update = first;
    update.port = 1503;
    update.retries = -1;
    update.protocol = 2;
    QVERIFY(config.save(update));

    QCOMPARE(config.devices().size(), 2);
    const DeviceEntry a = config.device(QStringLiteral("ups 1"));
    QCOMPARE(QList<int>({a.port, a.retries, a.protocol, a.interval}), QList<int>({1503, 2, 2, 60}));
    QVERIFY(a.plugin.isEmpty());
    const DeviceEntry b = config.device(QStringLiteral("rack-b"));
    QCOMPARE(b.retries, -1);
    QCOMPARE(b.plugin, QStringLiteral("OrvekClient"));
    QVERIFY(!config.contains(QStringLiteral("notes")));
    QVERIFY(!config.contains(QStringLiteral("half")));
    QSettings settings(path, QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("ups 1/eventChooseList/3")).toInt(), 1);

    // The plug-in reads the group the host wrote under the device name.
    QCOMPARE(settings.value(QStringLiteral("ups 1/port")).toInt(), 1503);

    // Names that are no group name, no address, ports out of range.
    const QList<DeviceEntry> rejected = {{QStringLiteral("a/b"), QStringLiteral("127.0.2.1"), 502, -1, -1, -1, {}},
                                         {QStringLiteral("c"), QStringLiteral("  "), 502, -1, -1, -1, {}},
                                         {QStringLiteral("d"), QStringLiteral("127.0.2.1"), 65536, -1, -1, -1, {}}};
    for (const DeviceEntry &entry : rejected) {
        QString error;
        QVERIFY(!config.save(entry, &error));
        QVERIFY(!error.isEmpty());
    }
    QCOMPARE(config.devices().size(), 2);
}

void TestHostUnits::parseEndpoint_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::newRow("ipv4") << "127.0.0.1:1502" << true << "127.0.0.1" << 1502;
    QTest::newRow("ipv6 in brackets") << "[::1]:502" << true << "::1" << 502;
    QTest::newRow("bare ipv6") << "::1:502" << false << "" << 0;
    QTest::newRow("port too big") << "host:65536" << false << "" << 0;
}

void TestHostUnits::parseEndpoint()
{
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QFETCH(QString, host);
    QFETCH(int, port);
    QString gotHost = QStringLiteral("unchanged");
    int gotPort = -7;
    QCOMPARE(DeviceConfig::parseEndpoint(text, &gotHost, &gotPort), valid);
    QCOMPARE(gotHost, valid ? host : QStringLiteral("unchanged"));
    QCOMPARE(gotPort, valid ? port : -7);
}

void TestHostUnits::options_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<bool>("headless");
    QTest::addColumn<int>("duration");
    QTest::addColumn<int>("userLevel");
    QTest::addColumn<QStringList>("additions"); // name=endpoint

    QTest::newRow("two additions") << QStringList{"--add", "u1", "127.0.0.1:1502", "--add", "u2", "h:2"} << true
                                   << false << -1 << 1 << QStringList{"u1=127.0.0.1:1502", "u2=h:2"};
    QTest::newRow("addition options anywhere")
        << QStringList{"--retries", "1", "--add", "u1", "--interval", "2", "h:1"} << true << false << -1 << 1
        << QStringList{"u1=h:1"};
    QTest::newRow("add without address") << QStringList{"--add", "u1"} << false << false << -1 << 1 << QStringList{};
    QTest::newRow("add with headless") << QStringList{"--add", "u", "h:1", "--headless"} << false << false << -1 << 1
                                       << QStringList{};
}

void TestHostUnits::options()
{
    QFETCH(QStringList, args);
    QFETCH(bool, ok);
    const HostOptions o = HostOptions::parse(QStringList{QStringLiteral("orvek-host")} + args);
    QCOMPARE(o.ok, ok);
    if (!ok) {
        QVERIFY(!o.error.isEmpty());
        return;
    }
    QTEST(o.headless, "headless");
    QTEST(o.durationSeconds, "duration");
    QTEST(o.userLevel, "userLevel");
    QStringList got;
    for (const auto &a : o.additions)
        got << a.first + QLatin1Char('=') + a.second;
    QTEST(got, "additions");
    if (args.contains(QStringLiteral("--retries"))) {
        QCOMPARE(o.retries, 1);
        QCOMPARE(o.interval, 2);
    }
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
    QTest::newRow("selftest with argument") << "selftest now" << one << Kind::Invalid << "" << 0 << "";
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

void TestHostUnits::dataLogRollsOverByDay()
{
    QTemporaryDir dir;
    LogWriter logs(dir.filePath(QStringLiteral("logs"))); // made on first use
    const QStringList header{"Input voltage(V)", "Output voltage(V)"};
    const QDate day1(2024, 2, 28);
    const QDate day2(2024, 2, 29);
    // Fields with commas, quotes and blanks at the ends are quoted.
    QVERIFY(logs.writeDataRow(QDateTime(day1, QTime(23, 59, 58)), "ups/1", header, {" say \"hi\"", "230/229,231"}));
    QVERIFY(logs.writeDataRow(QDateTime(day2, QTime(0, 0, 1)), "ups/1", header, {"0", "0"}));

    // Device names become parts of file names: no folders, no hidden files.
    QCOMPARE(QFileInfo(logs.dataFilePath("ups/1", day1)).fileName(), QStringLiteral("data-ups_1-2024-02-28.csv"));
    QCOMPARE(LogWriter::fileSafeName(QStringLiteral("../x")), QStringLiteral("_._x"));
    QCOMPARE(LogWriter::fileSafeName(QString()), QStringLiteral("device"));
    const QStringList first = HostTest::fileLines(logs.dataFilePath("ups/1", day1));
    QCOMPARE(first.size(), 2);
    QCOMPARE(HostTest::csvFields(first.at(0)), QStringList{"time"} + header);
    QCOMPARE(first.at(1), QStringLiteral("2024-02-28 23:59:58,\" say \"\"hi\"\"\",\"230/229,231\""));
    const QStringList second = HostTest::fileLines(logs.dataFilePath("ups/1", day2));
    QCOMPARE(second.size(), 2);
    QCOMPARE(HostTest::csvFields(second.at(0)), QStringList{"time"} + header);
    QCOMPARE(HostTest::csvFields(second.at(1)), (QStringList{"2024-02-29 00:00:01", "0", "0"}));
}

void TestHostUnits::eventLogOneLinePerEvent()
{
    QTemporaryDir dir;
    LogWriter logs(dir.path());
    const QDateTime time(QDate(2024, 1, 2), QTime(3, 4, 5));
    QVERIFY(logs.writeEvent(time, "ups1", 2006, "Battery low"));
    QVERIFY(logs.writeEvent(time.addSecs(1), "ups\t1", 1042, "text with\ta tab\nand a line break"));
    QVERIFY(logs.writeEvent(time.addDays(1), "ups1", 1041, "Communication lost"));

    QCOMPARE(QFileInfo(logs.eventFilePath(time.date())).fileName(), QStringLiteral("events-2024-01-02.log"));
    const QStringList lines = HostTest::fileLines(logs.eventFilePath(time.date()));
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0).split('\t'), (QStringList{"2024-01-02 03:04:05", "ups1", "2006", "Battery low"}));
    QCOMPARE(lines.at(1).split('\t'),
             (QStringList{"2024-01-02 03:04:06", "ups 1", "1042", "text with a tab and a line break"}));
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
    const QColor undecided = colour(DeviceStatus::State::Unknown, false);
    const QColor lost = colour(DeviceStatus::State::Lost, false);
    QCOMPARE(undecided.hsvSaturation(), 0);                                                      // grey
    QVERIFY(qAbs(colour(DeviceStatus::State::Communicating, false).hsvHue() - 120) < 25);       // green
    QVERIFY(qAbs(colour(DeviceStatus::State::Communicating, true).hsvHue() - 33) < 12);         // orange
    QVERIFY(lost.hsvHue() < 10 || lost.hsvHue() > 350); // red
    // A lost device shows lost, whatever its last data said.
    QCOMPARE(colour(DeviceStatus::State::Lost, true), lost);
    QCOMPARE(colour(DeviceStatus::State::Unknown, true), undecided);
}

void TestHostUnits::pluginDiscovery()
{
    PluginHost plugins;
    QCOMPARE(plugins.loadFolder(QCoreApplication::applicationDirPath()), 1);
    QCOMPARE(plugins.classNames(), QStringList{QStringLiteral("OrvekClient")});
    CollectThread *root = plugins.factory();
    QCOMPARE(plugins.factory(QStringLiteral("OrvekClient")), root);
    QVERIFY(!plugins.factory(QStringLiteral("SomeOtherClient")));
    // The root is the plug-in's own instance, and a factory of clients.
    QVERIFY(qobject_cast<OrvekClient *>(root));
    std::unique_ptr<CollectThread> client(root->create(nullptr));
    QVERIFY(client && client.get() != root);
    // Loading the folder again adds nothing.
    QCOMPARE(plugins.loadFolder(QCoreApplication::applicationDirPath()), 1);
}

void TestHostUnits::pluginFolderWithoutDevicePlugins()
{
    QTemporaryDir dir;
    // A library that is no plug-in, and a file that only looks like one.
    const QString contract = QCoreApplication::applicationDirPath() + QStringLiteral("/libCollectContract.so");
    QVERIFY(QFile::copy(contract, dir.filePath(QStringLiteral("libCollectContract.so"))));
    QFile junk(dir.filePath(QStringLiteral("libjunk.so")));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write(QByteArray(4096, '\x7f'));
    junk.close();
    PluginHost plugins;
    QCOMPARE(plugins.loadFolder(dir.path()), 0);
    QVERIFY(!plugins.factory());
    QCOMPARE(plugins.loadFolder(dir.filePath(QStringLiteral("missing"))), 0);
}

QTEST_MAIN(TestHostUnits)
#include "tst_host_units.moc"
