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
    void initTestCase();

    void configPathIsWhereThePluginReads();
    void configSaveAndReadBack();
    void configSaveRejects_data();
    void configSaveRejects();
    void parseEndpoint_data();
    void parseEndpoint();

    void options_data();
    void options();

    void consoleCommand_data();
    void consoleCommand();

    void eventText_data();
    void eventText();

    void csvField_data();
    void csvField();
    void dataLogRollsOverByDay();
    void eventLogOneLinePerEvent();
    void fileSafeName_data();
    void fileSafeName();

    void identityText_data();
    void identityText();
    void alarmsActive_data();
    void alarmsActive();
    void stateColours();

    void pluginDiscovery();
    void pluginFolderWithoutDevicePlugins();

private:
    QStringList m_eventTexts;
};

void TestHostUnits::initTestCase()
{
    OrvekClient dictionary;
    m_eventTexts = dictionary.getEventLogDesc();
    QCOMPARE(m_eventTexts.size(), 108);
}

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

    DeviceEntry first;
    first.name = QStringLiteral("ups 1");
    first.ipAddr = QStringLiteral("127.0.0.5");
    first.port = 1502;
    first.retries = 2;
    first.interval = 60;
    QVERIFY(config.save(first));
    DeviceEntry second;
    second.name = QStringLiteral("rack-b");
    second.ipAddr = QStringLiteral("::1");
    second.port = 502;
    second.plugin = QStringLiteral("OrvekClient");
    QVERIFY(config.save(second));
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

    const QList<DeviceEntry> devices = config.devices();
    QCOMPARE(devices.size(), 2);
    const DeviceEntry a = config.device(QStringLiteral("ups 1"));
    QCOMPARE(a.ipAddr, QStringLiteral("127.0.0.5"));
    QCOMPARE(a.port, 1503);
    QCOMPARE(a.retries, 2);
    QCOMPARE(a.protocol, 2);
    QCOMPARE(a.interval, 60);
    QVERIFY(a.plugin.isEmpty());
    const DeviceEntry b = config.device(QStringLiteral("rack-b"));
    QCOMPARE(b.port, 502);
    QCOMPARE(b.retries, -1);
    QCOMPARE(b.plugin, QStringLiteral("OrvekClient"));
    QVERIFY(!config.contains(QStringLiteral("notes")));
    QVERIFY(!config.contains(QStringLiteral("half")));
    QSettings settings(path, QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("ups 1/eventChooseList/3")).toInt(), 1);

    // The plug-in reads the group the host wrote under the device name.
    QCOMPARE(settings.value(QStringLiteral("ups 1/port")).toInt(), 1503);
}

void TestHostUnits::configSaveRejects_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("port");
    QTest::newRow("empty name") << "" << "127.0.2.1" << 502;
    QTest::newRow("slash in name") << "a/b" << "127.0.2.1" << 502;
    QTest::newRow("backslash in name") << "a\\b" << "127.0.2.1" << 502;
    QTest::newRow("blank around name") << " ups" << "127.0.2.1" << 502;
    QTest::newRow("no address") << "ups" << "  " << 502;
    QTest::newRow("port 0") << "ups" << "127.0.2.1" << 0;
    QTest::newRow("port too big") << "ups" << "127.0.2.1" << 65536;
}

void TestHostUnits::configSaveRejects()
{
    QFETCH(QString, name);
    QFETCH(QString, address);
    QFETCH(int, port);
    QTemporaryDir dir;
    DeviceConfig config(dir.filePath(QStringLiteral("dev.ini")));
    DeviceEntry entry;
    entry.name = name;
    entry.ipAddr = address;
    entry.port = port;
    QString error;
    QVERIFY(!config.save(entry, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(config.devices().isEmpty());
}

void TestHostUnits::parseEndpoint_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("port");
    QTest::newRow("ipv4") << "127.0.0.1:1502" << true << "127.0.0.1" << 1502;
    QTest::newRow("name") << "ups.example:502" << true << "ups.example" << 502;
    QTest::newRow("ipv6 in brackets") << "[::1]:502" << true << "::1" << 502;
    QTest::newRow("highest port") << "h:65535" << true << "h" << 65535;
    QTest::newRow("bare ipv6") << "::1:502" << false << "" << 0;
    QTest::newRow("no port") << "host:" << false << "" << 0;
    QTest::newRow("no host") << ":502" << false << "" << 0;
    QTest::newRow("no colon") << "host" << false << "" << 0;
    QTest::newRow("port 0") << "host:0" << false << "" << 0;
    QTest::newRow("port too big") << "host:65536" << false << "" << 0;
    QTest::newRow("port not a number") << "host:abc" << false << "" << 0;
    QTest::newRow("negative port") << "host:-1" << false << "" << 0;
    QTest::newRow("blank in host") << "ho st:502" << false << "" << 0;
    QTest::newRow("empty brackets") << "[]:502" << false << "" << 0;
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

    QTest::newRow("defaults") << QStringList{} << true << false << -1 << 1 << QStringList{};
    QTest::newRow("headless for a while") << QStringList{"--headless", "--duration", "5"} << true << true << 5 << 1
                                          << QStringList{};
    QTest::newRow("viewer") << QStringList{"--user-level", "0"} << true << false << -1 << 0 << QStringList{};
    QTest::newRow("two additions") << QStringList{"--add", "u1", "127.0.0.1:1502", "--add", "u2", "h:2"} << true
                                   << false << -1 << 1 << QStringList{"u1=127.0.0.1:1502", "u2=h:2"};
    QTest::newRow("addition options anywhere")
        << QStringList{"--retries", "1", "--add", "u1", "--interval", "2", "h:1"} << true << false << -1 << 1
        << QStringList{"u1=h:1"};
    QTest::newRow("add without address") << QStringList{"--add", "u1"} << false << false << -1 << 1 << QStringList{};
    QTest::newRow("stray argument") << QStringList{"h:1"} << false << false << -1 << 1 << QStringList{};
    QTest::newRow("duration not a number") << QStringList{"--duration", "x"} << false << false << -1 << 1
                                           << QStringList{};
    QTest::newRow("negative duration") << QStringList{"--duration", "-3"} << false << false << -1 << 1
                                       << QStringList{};
    QTest::newRow("level too high") << QStringList{"--user-level", "12"} << false << false << -1 << 1
                                    << QStringList{};
    QTest::newRow("interval 0") << QStringList{"--add", "u", "h:1", "--interval", "0"} << false << false << -1 << 1
                                << QStringList{};
    QTest::newRow("add with headless") << QStringList{"--add", "u", "h:1", "--headless"} << false << false << -1 << 1
                                       << QStringList{};
    QTest::newRow("unknown option") << QStringList{"--bogus"} << false << false << -1 << 1 << QStringList{};
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
    QFETCH(bool, headless);
    QFETCH(int, duration);
    QFETCH(int, userLevel);
    QFETCH(QStringList, additions);
    QCOMPARE(o.headless, headless);
    QCOMPARE(o.durationSeconds, duration);
    QCOMPARE(o.userLevel, userLevel);
    QStringList got;
    for (const auto &a : o.additions)
        got << a.first + QLatin1Char('=') + a.second;
    QCOMPARE(got, additions);
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
    QTest::newRow("selftest") << "selftest" << one << Kind::Control << "ups1" << 1003 << "";
    QTest::newRow("any case, blanks") << "  SelfTest  " << one << Kind::Control << "ups1" << 1003 << "";
    QTest::newRow("device prefix") << "ups2 selftest" << two << Kind::Control << "ups2" << 1003 << "";
    QTest::newRow("discharge test") << "discharge" << one << Kind::Control << "ups1" << 1005 << "";
    QTest::newRow("timed discharge") << "discharge 30" << one << Kind::Control << "ups1" << 1004 << "30";
    QTest::newRow("cancel test") << "cancel" << one << Kind::Control << "ups1" << 1006 << "";
    QTest::newRow("shutdown") << "ups1 shutdown 12" << two << Kind::Control << "ups1" << 1007 << "12";
    QTest::newRow("standby") << "standby 600" << one << Kind::Control << "ups1" << 1008 << "600";
    QTest::newRow("cancel shutdown") << "cancelshutdown" << one << Kind::Control << "ups1" << 1013 << "";
    QTest::newRow("buzzer") << "buzzer" << one << Kind::Control << "ups1" << 1014 << "1";
    QTest::newRow("buzzer on") << "buzzer on" << one << Kind::Control << "ups1" << 1014 << "1";
    QTest::newRow("buzzer off") << "buzzer OFF" << one << Kind::Control << "ups1" << 1014 << "0";
    QTest::newRow("time") << "time" << one << Kind::Control << "ups1" << 1011 << "2024-03-05 14:07:09";
    QTest::newRow("device named like a command") << "time selftest" << QStringList{"time"} << Kind::Control
                                                 << "time" << 1003 << "";
    QTest::newRow("status") << "status" << two << Kind::Status << "" << 0 << "";
    QTest::newRow("help") << "help" << two << Kind::Help << "" << 0 << "";
    QTest::newRow("quit") << "quit" << two << Kind::Quit << "" << 0 << "";
    QTest::newRow("empty") << "" << one << Kind::Empty << "" << 0 << "";
    QTest::newRow("blank") << " \t " << one << Kind::Empty << "" << 0 << "";
    QTest::newRow("several devices, no prefix") << "selftest" << two << Kind::Invalid << "" << 0 << "";
    QTest::newRow("no devices") << "selftest" << QStringList{} << Kind::Invalid << "" << 0 << "";
    QTest::newRow("unknown device") << "ups9 selftest" << two << Kind::Invalid << "" << 0 << "";
    QTest::newRow("unknown command") << "reboot" << one << Kind::Invalid << "" << 0 << "";
    QTest::newRow("shutdown without value") << "shutdown" << one << Kind::Invalid << "" << 0 << "";
    QTest::newRow("shutdown negative") << "shutdown -5" << one << Kind::Invalid << "" << 0 << "";
    QTest::newRow("standby not a number") << "standby soon" << one << Kind::Invalid << "" << 0 << "";
    QTest::newRow("selftest with argument") << "selftest now" << one << Kind::Invalid << "" << 0 << "";
    QTest::newRow("buzzer loud") << "buzzer loud" << one << Kind::Invalid << "" << 0 << "";
    QTest::newRow("too many arguments") << "shutdown 1 2" << one << Kind::Invalid << "" << 0 << "";
}

void TestHostUnits::consoleCommand()
{
    QFETCH(QString, line);
    QFETCH(QStringList, devices);
    QFETCH(Kind, kind);
    const QDateTime now(QDate(2024, 3, 5), QTime(14, 7, 9));
    const ConsoleCommand c = ConsoleCommand::parse(line, devices, now);
    QCOMPARE(c.kind, kind);
    if (kind == Kind::Invalid) {
        QVERIFY(!c.error.isEmpty());
        return;
    }
    if (kind != Kind::Control)
        return;
    QFETCH(QString, device);
    QFETCH(int, controlId);
    QFETCH(QString, value);
    QCOMPARE(c.device, device);
    QCOMPARE(c.controlId, controlId);
    QCOMPARE(c.value, value);
}

void TestHostUnits::eventText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariantMap>("map");
    QTest::addColumn<QString>("text");

    QTest::newRow("alarm raised") << 2006 << QVariantMap{{"alarmId", 3}, {"alarmState", 1}} << "Battery low";
    QTest::newRow("alarm cleared") << 2006 << QVariantMap{{"alarmId", 57}, {"alarmState", 0}}
                                   << "Battery voltage normal";
    QTest::newRow("battery low event") << 2010 << QVariantMap{{"alarmId", 3}, {"alarmState", 1}} << "Battery low";
    QTest::newRow("input fault event") << 2009 << QVariantMap{{"alarmId", 60}, {"alarmState", 0}} << "Input normal";
    QTest::newRow("alarm without text raised") << 2006 << QVariantMap{{"alarmId", 24}, {"alarmState", 1}}
                                               << "Alarm 24 raised";
    QTest::newRow("alarm without text cleared") << 2006 << QVariantMap{{"alarmId", 79}, {"alarmState", 0}}
                                                << "Alarm 25 cleared";
    QTest::newRow("alarm id missing") << 2006 << QVariantMap{{"alarmState", 1}} << "Alarm changed";
    QTest::newRow("alarm id of a wrong type") << 2006 << QVariantMap{{"alarmId", QStringList{"x"}}}
                                              << "Alarm changed";
    QTest::newRow("alarm id negative") << 2006 << QVariantMap{{"alarmId", -1}, {"alarmState", 1}}
                                       << "Alarm -1 raised";
    QTest::newRow("alarm id past the list") << 2006 << QVariantMap{{"alarmId", 5000}, {"alarmState", 0}}
                                            << "Alarm 4946 cleared";
    QTest::newRow("restored") << 1040 << QVariantMap{{"desc", "ups1"}, {"state", 0}} << "Communication restored";
    QTest::newRow("lost") << 1041 << QVariantMap{{"desc", "ups1"}, {"state", 1}} << "Communication lost";
    QTest::newRow("command result") << 1042 << QVariantMap{{"desc", "ups1 excute Selftest successful"}}
                                    << "ups1 excute Selftest successful";
    QTest::newRow("state record") << 2001 << QVariantMap{{"desc", "ups1"}, {"state", 0}} << "";
    QTest::newRow("decoded answer") << 2007 << QVariantMap{{"dis_alarm", 0}} << "";
    QTest::newRow("control request") << 1007 << QVariantMap{{"controlId", 1007}, {"controlValue", "12"}} << "";
    QTest::newRow("other event with text") << 3100 << QVariantMap{{"desc", "something"}} << "something";
    QTest::newRow("other event without text") << 3100 << QVariantMap{} << "";
}

void TestHostUnits::eventText()
{
    QFETCH(int, type);
    QFETCH(QVariantMap, map);
    QFETCH(QString, text);
    QCOMPARE(EventFormatter::text(type, map, m_eventTexts), text);
}

void TestHostUnits::csvField_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("written");
    QTest::newRow("plain") << "230/231/229" << "230/231/229";
    QTest::newRow("empty") << "" << "";
    QTest::newRow("comma") << "230/229,231" << "\"230/229,231\"";
    QTest::newRow("quote") << "say \"hi\"" << "\"say \"\"hi\"\"\"";
    QTest::newRow("line break") << "two\nlines" << "\"two\nlines\"";
    QTest::newRow("leading blank") << " x" << "\" x\"";
    QTest::newRow("trailing blank") << "x " << "\"x \"";
    QTest::newRow("inner blank") << "Utility supply" << "Utility supply";
}

void TestHostUnits::csvField()
{
    QFETCH(QString, field);
    QFETCH(QString, written);
    QCOMPARE(LogWriter::csvField(field), written);
    if (!field.contains(QLatin1Char('\n')))
        QCOMPARE(HostTest::csvFields(LogWriter::csvLine({field, field})), (QStringList{field, field}));
}

void TestHostUnits::dataLogRollsOverByDay()
{
    QTemporaryDir dir;
    LogWriter logs(dir.filePath(QStringLiteral("logs"))); // made on first use
    const QStringList header{"Input voltage(V)", "Output voltage(V)"};
    const QDate day1(2024, 2, 28);
    const QDate day2(2024, 2, 29);
    QVERIFY(logs.writeDataRow(QDateTime(day1, QTime(23, 59, 58)), "ups/1", header, {"230", "230/229,231"}));
    QVERIFY(logs.writeDataRow(QDateTime(day1, QTime(23, 59, 59)), "ups/1", header, {"231", "231"}));
    QVERIFY(logs.writeDataRow(QDateTime(day2, QTime(0, 0, 1)), "ups/1", header, {"0", "0"}));

    QCOMPARE(QFileInfo(logs.dataFilePath("ups/1", day1)).fileName(), QStringLiteral("data-ups_1-2024-02-28.csv"));
    const QStringList first = HostTest::fileLines(logs.dataFilePath("ups/1", day1));
    QCOMPARE(first.size(), 3);
    QCOMPARE(HostTest::csvFields(first.at(0)), QStringList{"time"} + header);
    QCOMPARE(HostTest::csvFields(first.at(1)), (QStringList{"2024-02-28 23:59:58", "230", "230/229,231"}));
    QCOMPARE(HostTest::csvFields(first.at(2)), (QStringList{"2024-02-28 23:59:59", "231", "231"}));
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

void TestHostUnits::fileSafeName_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("safe");
    QTest::newRow("plain") << "ups-1_a.b" << "ups-1_a.b";
    QTest::newRow("blank and slash") << "rack a/b" << "rack_a_b";
    QTest::newRow("parent folder") << "../x" << "_._x";
    QTest::newRow("hidden") << ".ups" << "_ups";
    QTest::newRow("empty") << "" << "device";
    QTest::newRow("non-latin letters") << "Ünit" << "Ünit";
}

void TestHostUnits::fileSafeName()
{
    QFETCH(QString, device);
    QFETCH(QString, safe);
    QCOMPARE(LogWriter::fileSafeName(device), safe);
}

void TestHostUnits::identityText_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QByteArray padded("Tower 11 3kVA");
    padded.resize(64); // NUL padded like the agent's registers
    QTest::newRow("NUL padded") << QVariant(padded) << "Tower 11 3kVA";
    QTest::newRow("blank padded") << QVariant(QByteArray("  Series 33   \0\0", 16)) << "Series 33";
    QTest::newRow("all NUL") << QVariant(QByteArray(64, '\0')) << "";
    QTest::newRow("garbage after NUL") << QVariant(QByteArray("ABC\0junk", 8)) << "ABC";
    QTest::newRow("control bytes") << QVariant(QByteArray("A\x01" "B\x7f")) << "A B";
    QTest::newRow("too long") << QVariant(QByteArray(200, 'x')) << QString(64, QLatin1Char('x'));
    QTest::newRow("text") << QVariant(QStringLiteral(" model ")) << "model";
    QTest::newRow("number") << QVariant(12345) << "12345";
    QTest::newRow("invalid") << QVariant() << "";
    QTest::newRow("list") << QVariant(QStringList{"a", "b"}) << "";
}

void TestHostUnits::identityText()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QCOMPARE(DeviceSession::identityText(value), text);
}

void TestHostUnits::alarmsActive_data()
{
    QTest::addColumn<QVariantMap>("points"); // id as text -> value
    QTest::addColumn<bool>("active");
    QTest::newRow("no data") << QVariantMap{} << false;
    QTest::newRow("all clear") << QVariantMap{{"2000", 0}, {"2026", 0}} << false;
    QTest::newRow("first alarm") << QVariantMap{{"2000", 1}} << true;
    QTest::newRow("last alarm") << QVariantMap{{"2026", 1}} << true;
    QTest::newRow("past the alarms") << QVariantMap{{"2027", 1}, {"1999", 1}} << false;
    QTest::newRow("other value") << QVariantMap{{"2005", 7}} << false;
    QTest::newRow("text") << QVariantMap{{"2005", "x"}} << false;
    QTest::newRow("invalid") << QVariantMap{{"2005", QVariant()}} << false;
}

void TestHostUnits::alarmsActive()
{
    QFETCH(QVariantMap, points);
    QFETCH(bool, active);
    QMap<int, QVariant> data;
    for (auto it = points.constBegin(); it != points.constEnd(); ++it)
        data.insert(it.key().toInt(), it.value());
    QCOMPARE(DeviceSession::alarmsActive(data), active);
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
    const QColor communicating = colour(DeviceStatus::State::Communicating, false);
    const QColor alarm = colour(DeviceStatus::State::Communicating, true);
    const QColor lost = colour(DeviceStatus::State::Lost, false);
    QCOMPARE(undecided.hsvSaturation(), 0);              // grey
    QVERIFY(qAbs(communicating.hsvHue() - 120) < 25);   // green
    QVERIFY(qAbs(alarm.hsvHue() - 33) < 12);            // orange
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
    QVERIFY(root);
    QCOMPARE(plugins.factory(QStringLiteral("OrvekClient")), root);
    QVERIFY(!plugins.factory(QStringLiteral("SomeOtherClient")));
    // The root is the plug-in's own instance, and a factory of clients.
    QVERIFY(qobject_cast<OrvekClient *>(root));
    std::unique_ptr<CollectThread> client(root->create(nullptr));
    QVERIFY(client);
    QVERIFY(client.get() != root);
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
