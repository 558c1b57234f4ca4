// The host without a network: command line, dev.ini, console, texts from untrusted data, log files,
// colours, plug-ins, and how it drives a scripted client (calls, names, requests, data).
#include <QtTest>

#include "consolecommand.h"
#include "consolemonitor.h"
#include "eventformatter.h"
#include "hostoptions.h"
#include "hosttestsupport.h"
#include "mainwindow.h"
#include "openfilelimit.h"
#include "pluginhost.h"

#include <QLabel>
#include <QStatusBar>
#include <QTreeWidget>
#include <sys/resource.h>

using namespace HostTest;
using Points = QMap<int, QVariant>;

// Every field of parsed options as "key=value"; additions with the address as --add reads it ("bad" when it cannot).
static QStringList fields(const HostOptions &o)
{
    if (!o.ok)
        return {QStringLiteral("error: ") + o.error};
    QStringList added;
    for (const auto &a : o.additions) {
        QString host;
        int port = 0;
        const bool ok = DeviceConfig::parseEndpoint(a.second, &host, &port);
        added << a.first + QLatin1Char('@') + (ok ? host + QLatin1Char(':') + QString::number(port) : "bad");
    }
    return QStringLiteral("help=%1|headless=%2|duration=%3|interval=%4|retries=%5|level=%6")
               .arg(o.helpRequested).arg(o.headless).arg(o.durationSeconds).arg(o.interval).arg(o.retries)
               .arg(o.userLevel).split('|')
           << "shot=" + o.screenshotFile << "add=" + added.join(QLatin1Char(',')) << "plugins=" + o.pluginFolder;
}

class TestHostUnits : public QObject
{
    Q_OBJECT

private slots:
    void options_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("parsed"); // the fields that differ from the defaults
        QTest::newRow("defaults") << QStringList() << QString();
        QTest::newRow("help wins") << QStringList{"--headless", "-h"} << "help=1";
        QTest::newRow("console for a while")
            << QStringList{"-headless", "--duration", "0", "--user-level=0", "--plugins", "/p"}
            << "headless=1 duration=0 level=0 plugins=/p";
        QTest::newRow("picture") << QStringList{"--screenshot", "w.png", "--user-level", "9"} << "level=9 shot=w.png";
        QTest::newRow("add, good and bad HOST:PORT")
            << QStringList{"--add", "ups 1", "127.0.0.1:502", "--add", "b", "[::1]:1502", "--add", "c", "h:0",
                           "--add", "d", "::1:502", "--add", "e", "h:65536", "--add", "f", "h",
                           "--interval", "60", "--retries", "1"}
            << "interval=60 retries=1 add=ups 1@127.0.0.1:502,b@::1:1502,c@bad,d@bad,e@bad,f@bad";
        QTest::newRow("unknown option") << QStringList{"--bogus"} << "error: Unknown option 'bogus'.";
        QTest::newRow("value missing") << QStringList{"--duration"} << "error: Missing value after '--duration'.";
        QTest::newRow("duration text") << QStringList{"--duration=5s"} << "error: --duration needs a number of seconds";
        QTest::newRow("duration < 0") << QStringList{"--duration=-1"} << "error: --duration needs a number of seconds";
        QTest::newRow("interval 0") << QStringList{"--interval", "0"}
                                    << "error: --interval needs a number of seconds (1 or more)";
        QTest::newRow("retries 0") << QStringList{"--retries", "0"} << "error: --retries needs a number (1 or more)";
        QTest::newRow("level 10") << QStringList{"--user-level=10"} << "error: --user-level needs a number from 0 to 9";
        QTest::newRow("level -1") << QStringList{"--user-level=-1"} << "error: --user-level needs a number from 0 to 9";
        QTest::newRow("address alone") << QStringList{"h:502"} << "error: unexpected argument h:502";
        QTest::newRow("name alone") << QStringList{"--add", "a"} << "error: every --add NAME needs its HOST:PORT";
        QTest::newRow("add and run") << QStringList{"--add", "a", "h:1", "--headless"}
                                     << "error: --add only writes dev.ini; run the host again without it";
    }

    void options()
    {
        QFETCH(QStringList, arguments);
        // Console off, run until stopped, operator level.
        const QStringList defaults = fields(HostOptions());
        QCOMPARE(defaults.join(' '),
                 "help=0 headless=0 duration=-1 interval=-1 retries=-1 level=1 shot= add= plugins=");
        QStringList changed;
        for (const QString &field : fields(HostOptions::parse(QStringList{"orvek-host"} + arguments))) {
            if (!defaults.contains(field))
                changed << field;
        }
        QTEST(changed.join(QLatin1Char(' ')), "parsed");
    }

    void listenOptions_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("address"); // null: refused
        QTest::addColumn<int>("port");
        for (const QString option : {QStringLiteral("nut-listen"), QStringLiteral("metrics-listen")}) {
            const auto row = [&option](const char *name) -> QTestData & {
                return QTest::newRow(qPrintable(option + QLatin1Char(' ') + QLatin1String(name))) << option;
            };
            row("IPv4") << "127.0.0.1:3493" << "127.0.0.1" << 3493;
            row("IPv6") << "[::1]:13493" << "::1" << 13493;
            row("host name") << "localhost:3493" << QString() << 0;
            row("no port") << "127.0.0.1" << QString() << 0;
            row("port 0") << "127.0.0.1:0" << QString() << 0;
        }
    }

    void listenOptions()
    {
        QFETCH(QString, option);
        QFETCH(QString, value);
        QFETCH(QString, address);
        QFETCH(int, port);
        const HostOptions off = HostOptions::parse({"orvek-host"});
        QVERIFY(off.ok && off.nutAddress.isEmpty() && off.metricsAddress.isEmpty()); // both off by default
        const HostOptions options = HostOptions::parse({"orvek-host", "--" + option, value});
        QCOMPARE(options.ok, !address.isNull());
        if (!options.ok) {
            QVERIFY(options.error.contains("--" + option));
            return;
        }
        const bool nut = option == QLatin1String("nut-listen");
        QCOMPARE(nut ? options.nutAddress : options.metricsAddress, address);
        QCOMPARE(nut ? options.nutPort : options.metricsPort, port);
        QVERIFY((nut ? options.metricsAddress : options.nutAddress).isEmpty());
    }

    void configSaveAndReadBack()
    {
        QCOMPARE(DeviceConfig::defaultPath(), OrvekClient::configFilePath()); // where the plug-in reads
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("db/dev.ini"));
        DeviceConfig config(path);
        QVERIFY(config.save({QStringLiteral("ups 1"), QStringLiteral("127.0.0.5"), 1502, 2, -1, 60, QString()}));
        // A key the host does not manage, and a group that is no device.
        QSettings(path, QSettings::IniFormat).setValue(QStringLiteral("ups 1/eventChooseList/3"), 1);
        QSettings(path, QSettings::IniFormat).setValue(QStringLiteral("notes/text"), QStringLiteral("no address"));
        // Update: a new port, retries left out (kept), protocol set.
        QVERIFY(config.save({QStringLiteral("ups 1"), QStringLiteral("127.0.0.5"), 1503, -1, 2, 60, QString()}));
        QCOMPARE(config.devices().size(), 1);
        const DeviceEntry a = config.device(QStringLiteral("ups 1"));
        QCOMPARE(QList<int>({a.port, a.retries, a.protocol, a.interval}), QList<int>({1503, 2, 2, 60}));
        QCOMPARE(QSettings(path, QSettings::IniFormat).value(QStringLiteral("ups 1/eventChooseList/3")).toInt(), 1);

        // Names that are no group name, no address, ports out of range, values
        // that QSettings would write escaped (the file could then not be read).
        const QList<DeviceEntry> rejected = {
            {"a/b", "127.0.2.1", 502, -1, -1, -1, {}}, {"c", "  ", 502, -1, -1, -1, {}},
            {"d", "127.0.2.1", 65536, -1, -1, -1, {}}, {"e", "127.0.\"2.1", 502, -1, -1, -1, {}},
            {"f", "h\x01st", 502, -1, -1, -1, {}},    {"g", "::1", 502, -1, -1, -1, "@Variant"}};
        for (const DeviceEntry &bad : rejected) {
            QString error;
            QVERIFY2(!config.save(bad, &error) && !error.isEmpty(), qPrintable(bad.name));
        }
        QCOMPARE(config.devices().size(), 1);
    }

    void consoleCommand_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("devices");
        QTest::addColumn<QString>("parsed"); // kind, device, control id, value
        const QStringList one{"ups1"};
        const QStringList two{"ups1", "ups2"};
        QTest::newRow("any case, blanks") << "  SelfTest  " << one << "control ups1 1003 ";
        QTest::newRow("device prefix") << "ups2 buzzer OFF" << two << "control ups2 1014 0";
        QTest::newRow("status") << "status" << two << "status  0 ";
        QTest::newRow("several devices, no prefix") << "selftest" << two << "invalid  0 ";
        QTest::newRow("unknown device") << "ups9 selftest" << two << "invalid  0 ";
        QTest::newRow("shutdown negative") << "shutdown -5" << one << "invalid  0 ";
    }

    void consoleCommand()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, devices);
        const ConsoleCommand c = ConsoleCommand::parse(line, devices, QDateTime(QDate(2024, 3, 5), QTime(14, 7, 9)));
        const char *const kinds[] = {"empty", "control", "status", "help", "quit", "invalid"};
        QCOMPARE(c.error.isEmpty(), c.kind != ConsoleCommand::Kind::Invalid); // an invalid line says why
        QTEST(QStringLiteral("%1 %2 %3 %4").arg(kinds[int(c.kind)], c.device).arg(c.controlId).arg(c.value), "parsed");
    }

    void consoleDeviceLine_data()
    {
        QTest::addColumn<QVariant>("state"); // upsInfo "state"; invalid: not yet reported
        QTest::addColumn<Points>("data");    // empty: only events without data points
        QTest::addColumn<int>("age");        // seconds since the data arrived
        QTest::addColumn<QString>("line");

        QTest::newRow("single phase")
            << QVariant(0) << Points{{8, 1}, {9, 230}, {24, 3}, {26, 1}, {27, 231}, {39, 35}, {3, 100}} << 75
            << "ups-c  communicating  Tower 3k  data 1 min 15 s ago  Utility supply  in 230 V  out 231 V  load 35 %  "
               "battery 100 %  alarms: none";
        QTest::newRow("three-phase input, alarms")
            << QVariant(0) << Points{{8, 3}, {9, 230}, {10, 231}, {11, 229}, {24, 5}, {26, 1}, {27, 220}, {28, 9},
                                     {39, 30}, {3, 80}, {2006, 1}, {2016, 1}, {2024, 1}} << 12
            << "ups-c  communicating  Tower 3k  data 12 s ago  Battery supply  in 230/231/229 V  out 220 V  load 30 %  "
               "battery 80 %  alarms: Input fault; Fan fault; Alarm 24";
        QTest::newRow("three-phase output, lost")
            << QVariant(1) << Points{{8, 1}, {9, 230}, {24, 4}, {26, 3}, {27, 220}, {28, 221}, {29, 222}, {39, 30},
                                     {40, 31}, {41, 32}} << 3725
            << "ups-c  lost  Tower 3k  data 1 h 2 min ago  Bypass supply  in 230 V  out 220/221/222 V  "
               "load 30/31/32 %  battery - %  alarms: none";
        QTest::newRow("codes outside the lists, values missing")
            << QVariant() << Points{{24, 0}, {26, 3}, {27, 220}} << 0
            << "ups-c  connecting  Tower 3k  data 0 s ago  Other supply  in - V  out 220/-/- V  load -/-/- %  "
               "battery - %  alarms: none";
        QTest::newRow("no data yet") << QVariant(1) << Points() << 0 << "ups-c  lost  Tower 3k  no data yet";
    }

    void consoleDeviceLine()
    {
        QFETCH(QVariant, state);
        QFETCH(Points, data);
        QFETCH(int, age);
        ScriptedHost h;
        ScriptedClient *client = h.start(QStringLiteral("ups-c"));
        QVERIFY(client);
        DeviceSession *session = h.host.session(QStringLiteral("ups-c"));
        if (state.isValid())
            client->flushUpsInfo(QStringLiteral("state"), state);
        client->flushUpsInfo(QStringLiteral("upsIdentModel"), QByteArray("Tower 3k\0\0\0", 11));

        // A state record and an alarm-only answer carry no data points: no age.
        QSignalSpy events(session, &DeviceSession::eventReceived);
        emit client->postDEvent(2001, {{QStringLiteral("state"), state}});
        emit client->postDEvent(2007, {{QStringLiteral("dis_alarm"), 0}});
        if (!data.isEmpty())
            client->sendData(data);
        QTRY_COMPARE(events.count(), data.isEmpty() ? 2 : 3);
        QCOMPARE(session->lastDataTime().isValid(), !data.isEmpty());
        QTEST(ConsoleMonitor::deviceLine(session, session->lastDataTime().addSecs(age)), "line");

        // The status block: a head with the counts, then a line per device.
        const QString block = ConsoleMonitor(&h.host, nullptr).statusBlock();
        const int communicating = state.isValid() && state.toInt() == 0;
        QVERIFY2(block.contains(QStringLiteral(" 1 device(s), %1 communicating ==\n  ups-c  ").arg(communicating))
                 && block.count(QLatin1Char('\n')) == 1, qPrintable(block));
    }

    void textsFromUntrustedData()
    {
        const QStringList texts = OrvekClient().getEventLogDesc();
        auto text = [&texts](int type, const QVariantMap &map) { return EventFormatter::text(type, map, texts); };
        // Cleared alarms index the second half of the texts; ids without a text are named.
        QCOMPARE(text(2006, {{"alarmId", 79}, {"alarmState", 0}}), QStringLiteral("Alarm 25 cleared"));
        QCOMPARE(text(2006, {{"alarmId", 5000}, {"alarmState", 0}}), QStringLiteral("Alarm 4946 cleared"));
        QCOMPARE(text(2006, {{"alarmState", 1}}), QStringLiteral("Alarm changed"));
        QCOMPARE(text(3100, {{"desc", "something"}}), QStringLiteral("something"));

        QByteArray padded("Tower 11 3kVA");
        padded.resize(64); // NUL padded like the agent's registers
        QCOMPARE(DeviceSession::identityText(padded), QStringLiteral("Tower 11 3kVA"));
        QCOMPARE(DeviceSession::identityText(QByteArray("A\x01" "B\x7f")), QStringLiteral("A B"));
        QCOMPARE(DeviceSession::identityText(QByteArray(200, 'x')), QString(64, QLatin1Char('x')));
        QCOMPARE(DeviceSession::identityText(QStringList{"a", "b"}), QString());
        // Only the value 1 on 2000..2026 counts as an active alarm.
        QVERIFY(DeviceSession::alarmsActive({{2026, 1}}));
        QVERIFY(!DeviceSession::alarmsActive({{2027, 1}, {1999, 1}, {2005, 7}, {2006, QStringLiteral("x")}}));
    }

    void logFiles()
    {
        QTemporaryDir dir;
        LogWriter logs(dir.filePath(QStringLiteral("logs"))); // made on first use
        const QStringList header{"Input voltage(V)", "Output voltage(V)"};
        const QDate day1(2024, 2, 28);
        // Data rows: a file per device and day, each with its header; fields with
        // commas, quotes and blanks at the ends are quoted.
        QVERIFY(logs.writeDataRow(QDateTime(day1, QTime(23, 59, 58)), "../1", header, {" 230", "say \"hi\",231"}));
        QVERIFY(logs.writeDataRow(QDateTime(day1.addDays(1), QTime(0, 0, 1)), "../1", header, {"0", "0"}));
        // Device names become parts of file names: no folders, no hidden files.
        QCOMPARE(QFileInfo(logs.dataFilePath("../1", day1)).fileName(), QStringLiteral("data-_._1-2024-02-28.csv"));
        QCOMPARE(fileLines(logs.dataFilePath("../1", day1)),
                 (QStringList{"time,Input voltage(V),Output voltage(V)",
                              "2024-02-28 23:59:58,\" 230\",\"say \"\"hi\"\",231\""}));
        QCOMPARE(fileLines(logs.dataFilePath("../1", day1.addDays(1))).size(), 2);

        // Events: one line per event, tabs and line breaks taken out of the fields.
        const QDateTime time(QDate(2024, 1, 2), QTime(3, 4, 5));
        QVERIFY(logs.writeEvent(time, "ups\t1", 1042, "text with\ta tab\nand a line break"));
        QVERIFY(logs.writeEvent(time.addDays(1), "ups1", 1041, "Communication lost"));
        QCOMPARE(QFileInfo(logs.eventFilePath(time.date())).fileName(), QStringLiteral("events-2024-01-02.log"));
        QCOMPARE(fileLines(logs.eventFilePath(time.date())),
                 QStringList{"2024-01-02 03:04:05\tups 1\t1042\ttext with a tab and a line break"});
        QCOMPARE(fileLines(logs.eventFilePath(time.date().addDays(1))).size(), 1);
    }

    void stateColours()
    {
        using State = DeviceStatus::State;
        auto colour = [](State state, bool alarm) { return MainWindow::stateColour({{}, state, {}, -1, {}, alarm}); };
        const QSet<QRgb> distinct = {colour(State::Unknown, false).rgb(), colour(State::Communicating, false).rgb(),
                                     colour(State::Communicating, true).rgb(), colour(State::Lost, false).rgb()};
        QCOMPARE(distinct.size(), 4);
        QCOMPARE(colour(State::Lost, true), colour(State::Lost, false)); // lost, whatever the last data said
    }

    void openFileLimitShortfall_data()
    {
        QTest::addColumn<quint64>("limit");
        QTest::addColumn<int>("devices");
        QTest::addColumn<int>("served"); // -1: all fit, nothing to tell
        QTest::newRow("default limit, fits") << quint64(1024) << 320 << -1;
        QTest::newRow("default limit, one too many") << quint64(1024) << 321 << 320;
        QTest::newRow("default limit, 600") << quint64(1024) << 600 << 320;
        QTest::newRow("raised limit, 2000") << quint64(524288) << 2000 << -1;
        QTest::newRow("below the host's own") << quint64(40) << 1 << 0;
        QTest::newRow("no devices") << quint64(0) << 0 << -1;
        QTest::newRow("unlimited") << std::numeric_limits<quint64>::max() << 1000000 << -1;
    }

    void openFileLimitShortfall()
    {
        QFETCH(quint64, limit);
        QFETCH(int, devices);
        QFETCH(int, served);
        const QString text = OpenFileLimit::shortfallText(limit, devices);
        QCOMPARE(text.isEmpty(), served < 0);
        if (served >= 0) { // the count, the limit and how many are served, all in one message
            for (const QString &part : {QStringLiteral("%1 devices are configured").arg(devices),
                                        QStringLiteral("at most %1 open files").arg(limit),
                                        QStringLiteral("serve only %1 of them").arg(served)})
                QVERIFY2(text.contains(part), qPrintable(text));
        }
    }

    void openFileLimitRaised() // from a lowered soft limit up to the hard one
    {
        rlimit limit{};
        QVERIFY(getrlimit(RLIMIT_NOFILE, &limit) == 0);
        const rlim_t hard = limit.rlim_max;
        limit.rlim_cur = qMin<rlim_t>(hard, 256);
        QVERIFY(setrlimit(RLIMIT_NOFILE, &limit) == 0);
        const quint64 expected = hard == RLIM_INFINITY ? OpenFileLimit::UnlimitedCap : quint64(hard);
        QCOMPARE(OpenFileLimit::raise(), expected);
        QVERIFY(getrlimit(RLIMIT_NOFILE, &limit) == 0);
        QCOMPARE(quint64(limit.rlim_cur), expected);
    }

    void pluginFolder()
    {
        PluginHost plugins; // broken libraries: with the host's faults
        for (int round = 0; round < 2; ++round) // nothing added twice
            QCOMPARE(plugins.loadFolder(builtBinaryDir()), 1);
        QVERIFY(qobject_cast<OrvekClient *>(plugins.factory())); // the first, for devices that name none
        QCOMPARE(plugins.factory(QStringLiteral("OrvekClient")), plugins.factory());
        QVERIFY(!plugins.factory(QStringLiteral("SomeOtherClient")));
        QCOMPARE(PluginHost().loadFolder(builtBinaryDir() + QStringLiteral("/missing")), 0);
    }

    void staleDataIsToldOnce()
    {
        // An agent that keeps the connection but stops answering: only the data's age shows it.
        ScriptedHost h;
        ScriptedClient *client = h.start(QStringLiteral("ups 1"));
        DeviceSession *session = h.host.session(QStringLiteral("ups 1"));
        session->setStaleRule(StaleRule(1, 0)); // stale once a whole second has passed
        client->flushUpsInfo(QStringLiteral("state"), 0);
        QSignalSpy logged(&h.host, &DeviceHost::eventLogged);
        const auto types = [&logged] {
            QList<int> t;
            for (const QList<QVariant> &args : logged)
                t << args.at(2).toInt();
            return t;
        };
        client->sendData({{9, 230}});
        QTRY_COMPARE_WITH_TIMEOUT(types(), QList<int>{DeviceHost::DataStale}, 5000);
        QVERIFY(session->status().stale);
        QVERIFY(ConsoleMonitor::deviceLine(session).contains(QStringLiteral("data stale")));
        QTest::qWait(DeviceHost::StaleCheckMs + 200); // told once, not on every check
        QCOMPARE(types().size(), 1);
        client->sendData({{9, 231}});
        QTRY_COMPARE_WITH_TIMEOUT(types(), (QList<int>{DeviceHost::DataStale, DeviceHost::DataCurrent}), 3000);
        // A lost device is told as lost only.
        client->flushUpsInfo(QStringLiteral("state"), 1);
        QTest::qWait(2 * DeviceHost::StaleCheckMs + 200);
        QCOMPARE(types().size(), 2);
        QVERIFY(!session->status().stale);
    }

    void deviceListWithManyRows()
    {
        // Rows are refreshed one by one as their devices report: each row must
        // show its own device, whatever order the reports come in.
        constexpr int kDevices = 300;
        ScriptedHost h;
        QList<ScriptedClient *> clients;
        for (int i = 0; i < kDevices; ++i)
            clients << h.start(QStringLiteral("ups %1").arg(i, 3, 10, QLatin1Char('0')));
        MainWindow window(&h.host);
        auto *tree = window.findChild<QTreeWidget *>(QStringLiteral("deviceTree"));
        QCOMPARE(tree->topLevelItemCount(), kDevices);
        const auto report = [&clients](int i, int round) {
            const bool lost = (i + round) % 3 == 0;
            clients[i]->flushUpsInfo(QStringLiteral("state"), lost ? 1 : 0);
            clients[i]->flushUpsInfo(QStringLiteral("upsLoad"), i + round);
            clients[i]->sendData({{39, i + round}, {2001, (i + round) % 5 == 0 ? 1 : 0}});
        };
        for (int round = 0; round < 2; ++round) {
            QSignalSpy logged(&h.host, &DeviceHost::dataLogged);
            for (int k = 0; k < kDevices; ++k)
                report(k * 7 % kDevices, round); // 7 and 300 share no factor: every device, scrambled
            QTRY_COMPARE(logged.count(), kDevices);
            int communicating = 0;
            for (int i = 0; i < kDevices; ++i) {
                const QTreeWidgetItem *item = tree->topLevelItem(i);
                const int device = item->text(0).mid(4).toInt();
                const bool lost = (device + round) % 3 == 0;
                const bool alarm = (device + round) % 5 == 0;
                communicating += lost ? 0 : 1;
                const QString expected = lost ? "Communication lost" : alarm ? "Alarm" : "Communicating";
                QCOMPARE(item->text(1), expected);
                QCOMPARE(item->text(3), QStringLiteral("%1 %").arg(device + round));
                DeviceStatus status;
                status.state = lost ? DeviceStatus::State::Lost : DeviceStatus::State::Communicating;
                status.alarmActive = alarm;
                QCOMPARE(window.deviceColour(item->text(0)), MainWindow::stateColour(status));
            }
            QStringList labels;
            for (const QLabel *label : window.statusBar()->findChildren<QLabel *>())
                labels << label->text();
            QVERIFY2(labels.contains(QStringLiteral("Devices: %1").arg(kDevices)), qPrintable(labels.join('|')));
            QVERIFY2(labels.contains(QStringLiteral("Communicating: %1").arg(communicating)), qPrintable(labels.join('|')));
        }
    }

    void drivesScriptedClient() // calls and names; view requests to control(), data to the view and the data log
    {
        ScriptedClient::journal.clear();
        ScriptedHost h;
        h.host.setUserInfo(QStringLiteral("operator"), 1);
        ScriptedClient *client = h.start(QStringLiteral("ups 1"));
        QVERIFY(client && client->isRunning());
        // No view until the device is shown: a headless host never makes one.
        QCOMPARE(ScriptedClient::journal, (QStringList{"create", "loadConfig:ups 1"}));
        DeviceSession *session = h.host.session(QStringLiteral("ups 1"));
        QVERIFY(!session->view());
        QVERIFY(noticeTexts(h.host, QStringLiteral("retries")).isEmpty());

        QSignalSpy events(session, &DeviceSession::eventReceived);
        // Answers without data points (alarms, identity) and junk in their place: nothing to show or log.
        emit client->postDEvent(2007, {{"dis_alarm", 0}});
        emit client->postDEvent(2007, {{"data", QStringLiteral("junk")}, {"raw_data", QByteArray(146, '\0')}});
        const Points data{{9, 230}, {2000, 1}};
        client->sendData(data);
        QTRY_COMPARE(events.count(), 3);
        QCOMPARE(session->latestData(), data);
        QVERIFY(session->status().alarmActive);

        // Shown after the data arrived: the view comes with the latest values and the user's rights.
        CollectView *view = session->showView();
        QVERIFY(view && view == client->view.get());
        QCOMPARE(ScriptedClient::journal.last(), QStringLiteral("getView"));
        QCOMPARE(client->view->calls, QStringList({"flushData", "refreshData"}));
        QCOMPARE(client->view->dataMap, data);
        QCOMPARE(client->view->userLevel, 1);
        // Hidden, it gets nothing; shown again, the latest.
        session->hideView();
        client->view->calls.clear();
        const Points later{{9, 231}};
        client->sendData(later);
        QTRY_COMPARE(events.count(), 4);
        QVERIFY(client->view->calls.isEmpty());
        session->showView();
        QCOMPARE(client->view->calls, QStringList({"flushData", "refreshData"}));
        QCOMPARE(client->view->dataMap, later);

        for (int id : {1002, 1003, 1014, 1015}) // the ends of the control range and their neighbours
            client->view->control(id, QString::number(id)); // what the view's widgets do
        QVERIFY(client->controls.isEmpty());                // queued, not a direct call
        QTRY_COMPARE(events.count(), 8);
        QCOMPARE(client->controls, (QList<QPair<int, QString>>{{1003, "1003"}, {1014, "1014"}}));
        // One header and one row; every column the plug-in formats is written, commas quoted.
        const QString path = h.host.logs().dataFilePath(session->name(), QDate::currentDate());
        QCOMPARE(fileLines(path).size(), 3);
        QCOMPARE(csvFields(fileLines(path).at(1)).mid(1), (QStringList{"230", "a,b"}));

        // A taken name, a factory without clients, no factory at all.
        QVERIFY(!h.start(QStringLiteral("ups 1")));
        h.factory.makesClients = false;
        QVERIFY(!h.start(QStringLiteral("dev-b")));
        h.factory.makesClients = true;
        QVERIFY(!h.host.addDevice(nullptr, QStringLiteral("dev-c")));
        QCOMPARE(noticeTexts(h.host, QStringLiteral("not started")),
                 (QStringList{"ups 1:not started a second time: a device of that name is already running",
                              "dev-b:not started: the plug-in made no client for it",
                              "dev-c:not started: the plug-in made no client for it"}));

        // Names that make one file name: each still writes a data log of its own.
        ScriptedClient *twin = h.start(QStringLiteral("ups_1"));
        QVERIFY(twin);
        const QStringList clash = noticeTexts(h.host, QStringLiteral("would share one file name"));
        QVERIFY2(clash.size() == 1 && clash.first().startsWith("ups_1:") && clash.first().contains("\"ups 1\""),
                 qPrintable(clash.join('\n')));
        QCOMPARE(h.host.deviceNames(), (QStringList{"ups 1", "ups_1"}));
        QSignalSpy routed(&h.host, &DeviceHost::deviceEvent);
        twin->sendData({{9, 201}});
        const QString twinPath = h.host.logs().dataFilePath(QStringLiteral("ups_1"), QDate::currentDate());
        QTRY_COMPARE(fileLines(twinPath).size(), 2); // a shared file would hold the other row already
        QCOMPARE(routed.value(0), (QVariantList{QStringLiteral("ups_1"), 2007}));
        QCOMPARE(csvFields(fileLines(twinPath).at(1)).value(1), QStringLiteral("201"));
        QCOMPARE(fileLines(path).size(), 3);
    }
};

QTEST_MAIN(TestHostUnits)
#include "tst_host_units.moc"
