// The host's NUT server: request words and quoting, each error path, users and rights, the
// variables read from decoded data, bounds against hostile clients, and Debian's own NUT
// clients (upsc, upscmd) against the host polling the simulated agent through the plug-in.
#include <QProcess>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QtTest>

#include "consolecommand.h"
#include "hostoptions.h"
#include "hosttestsupport.h"
#include "nutcommands.h"
#include "nutconnection.h"
#include "nutline.h"
#include "nutserver.h"
#include "nutusers.h"
#include "nutvariables.h"
#include "stalerule.h"
#include "upsalarms.h"
#include "upscommands.h"
#include "upssimulator.h"
#include "viewsampledata.h"

using Points = QMap<int, QVariant>;
using Lines = QList<QByteArray>;

namespace {

constexpr int kAnswerMs = 5000;
constexpr int kConnectMs = 20000; // a 1 s tick, the client's 5 s pause before connecting, a rotation, slack
constexpr int kProcessMs = 15000;
const QByteArray kSentinel = QByteArrayLiteral("NETVER");
const QByteArray kSentinelAnswer = QByteArrayLiteral("1.3");

const QByteArray kUsers = R"(# rights of the test users
[op]
    password = "pa ss\"w"
    instcmds = test.battery.start.quick, load.off.delay
[admin]
    password = adminpw
    instcmds = ALL
[mon]
    password = monpw
    upsmon secondary
[boss]
    password = bosspw
    upsmon primary
)";

NutUsers testUsers(const QByteArray &text = kUsers)
{
    NutUsers parsed;
    parsed.parse(text);
    return parsed;
}

// A healthy single-phase UPS with the buzzer on and the manufacturer text in need of escapes.
Points sampleData()
{
    Points data = ViewSampleData::deviceData(false);
    data[UpsPoint::BuzzerState] = UpsCode::BuzzerEnabled;
    data[UpsPoint::Manufacturer] = ViewSampleData::identityBlock("Ex \"Power\" \\ Co", 32);
    return data;
}

// A test's side of one NUT connection.
class RawClient
{
public:
    explicit RawClient(quint16 port, qint64 readBufferSize = 0)
    {
        m_socket.setReadBufferSize(readBufferSize);
        m_socket.connectToHost(QHostAddress::LocalHost, port);
    }
    bool connected()
    {
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, kAnswerMs);
    }
    void write(const QByteArray &bytes) { m_socket.write(bytes); }
    // Lines until one equals last (included) or the time is up.
    Lines readUntil(const QByteArray &last)
    {
        Lines lines;
        (void)QTest::qWaitFor([&] {
            while (m_socket.canReadLine())
                lines << m_socket.readLine().chopped(1);
            return !lines.isEmpty() && lines.last() == last;
        }, kAnswerMs);
        return lines;
    }
    // The answers to the requests, up to a closing NETVER whose answer is left out.
    Lines exchange(const Lines &requests)
    {
        write((requests + Lines{kSentinel}).join('\n') + '\n');
        Lines lines = readUntil(kSentinelAnswer);
        if (!lines.isEmpty() && lines.last() == kSentinelAnswer)
            lines.removeLast();
        else
            lines << "(no answer to the closing NETVER)";
        return lines;
    }
    bool closedByServer()
    {
        return QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; }, kAnswerMs);
    }
    QTcpSocket &socket() { return m_socket; }

private:
    QTcpSocket m_socket;
};

struct ServedHost : ScriptedHost
{
    ServedHost()
    {
        ups1 = start(QStringLiteral("ups1"));
        server.setUsers(testUsers());
    }
    bool listen() { return server.listen(QHostAddress::LocalHost, 0); }
    bool feed(ScriptedClient *client, const Points &data)
    {
        DeviceSession *session = host.session(client->name);
        client->sendData(data);
        return QTest::qWaitFor([session, data] { return session->latestData() == data; }, kAnswerMs);
    }
    ScriptedClient *ups1 = nullptr;
    NutServer server{&host};
};

Lines repeated(int count, const QByteArray &line)
{
    Lines lines;
    for (int i = 0; i < count; ++i)
        lines << line;
    return lines;
}

} // namespace

class TestHostNut : public QObject
{
    Q_OBJECT

private slots:
    void protocol_data()
    {
        QTest::addColumn<Lines>("requests");
        QTest::addColumn<Lines>("answers");
        QTest::newRow("one UPS per usable device name")
            << Lines{"LIST UPS", "GET VAR \"bad name\" ups.status"}
            << Lines{"BEGIN LIST UPS", "UPS ups1 \"Tower 11 3kVA\"", "END LIST UPS", "ERR UNKNOWN-UPS"};
        QTest::newRow("quoted words, escaped values")
            << Lines{"GET \"VAR\" \"ups1\" ups.mfr", "GET VAR ups\\1 ups.load", "GET UPSDESC ups1"}
            << Lines{"VAR ups1 ups.mfr \"Ex \\\"Power\\\" \\\\ Co\"", "VAR ups1 ups.load \"35\"",
                     "UPSDESC ups1 \"Tower 11 3kVA\""};
        QTest::newRow("broken words") << Lines{"GET VAR \"ups1 ups.load", "GET VAR ups1 ups.load\\"}
                                      << Lines{"ERR INVALID-ARGUMENT", "ERR INVALID-ARGUMENT"};
        QTest::newRow("wrong argument counts")
            << Lines{"GET VAR ups1", "LIST", "LIST VAR", "LIST UPS x", "GET NUMLOGINS", "USERNAME", "LOGIN",
                     "INSTCMD ups1", "GET TRACKING"}
            << repeated(9, "ERR INVALID-ARGUMENT");
        QTest::newRow("unknown command, commands are upper case")
            << Lines{"get VAR ups1 ups.load", "FROB"} << repeated(2, "ERR UNKNOWN-COMMAND");
        QTest::newRow("unknown UPS")
            << Lines{"LIST VAR nope", "LIST CMD nope", "GET UPSDESC nope", "GET VAR nope ups.load", "USERNAME admin",
                     "PASSWORD adminpw", "INSTCMD nope beeper.toggle", "LOGIN nope"}
            << Lines{"ERR UNKNOWN-UPS", "ERR UNKNOWN-UPS", "ERR UNKNOWN-UPS", "ERR UNKNOWN-UPS", "OK", "OK",
                     "ERR UNKNOWN-UPS", "ERR UNKNOWN-UPS"};
        QTest::newRow("variable not served")
            << Lines{"GET VAR ups1 ups.nothing", "GET TYPE ups1 ups.nothing", "LIST ENUM ups1 ups.nothing"}
            << repeated(3, "ERR VAR-NOT-SUPPORTED");
        QTest::newRow("types and descriptions")
            << Lines{"GET TYPE ups1 battery.charge", "GET TYPE ups1 ups.status", "GET CMDDESC ups1 nope",
                     "GET DESC ups1 nope"}
            << Lines{"TYPE ups1 battery.charge NUMBER", "TYPE ups1 ups.status STRING:2",
                     "CMDDESC ups1 nope \"Description unavailable\"", "DESC ups1 nope \"Description unavailable\""};
        QTest::newRow("nothing is writable")
            << Lines{"LIST RW ups1", "LIST ENUM ups1 ups.status", "LIST RANGE ups1 ups.load"}
            << Lines{"BEGIN LIST RW ups1", "END LIST RW ups1", "BEGIN LIST ENUM ups1 ups.status",
                     "END LIST ENUM ups1 ups.status", "BEGIN LIST RANGE ups1 ups.load", "END LIST RANGE ups1 ups.load"};
        QTest::newRow("no TLS") << Lines{"STARTTLS"} << Lines{"ERR FEATURE-NOT-CONFIGURED"};
        QTest::newRow("credentials first")
            << Lines{"INSTCMD ups1 test.battery.start.quick", "LOGIN ups1", "USERNAME op", "FSD ups1",
                     "INSTCMD ups1 test.battery.start.quick", "SET VAR ups1 ups.load 1"}
            << Lines{"ERR USERNAME-REQUIRED", "ERR USERNAME-REQUIRED", "OK", "ERR PASSWORD-REQUIRED",
                     "ERR PASSWORD-REQUIRED", "ERR PASSWORD-REQUIRED"};
        QTest::newRow("user and password once")
            << Lines{"USERNAME a", "USERNAME b", "PASSWORD x", "PASSWORD y"}
            << Lines{"OK", "ERR ALREADY-SET-USERNAME", "OK", "ERR ALREADY-SET-PASSWORD"};
        QTest::newRow("wrong password")
            << Lines{"USERNAME admin", "PASSWORD adminPW", "INSTCMD ups1 beeper.toggle", "LOGIN ups1"}
            << Lines{"OK", "OK", "ERR ACCESS-DENIED", "ERR ACCESS-DENIED"};
        QTest::newRow("unknown user") << Lines{"USERNAME eve", "PASSWORD x", "INSTCMD ups1 beeper.toggle"}
                                      << Lines{"OK", "OK", "ERR ACCESS-DENIED"};
        QTest::newRow("granted commands only")
            << Lines{"USERNAME op", "PASSWORD \"pa ss\\\"w\"", "INSTCMD ups1 beeper.toggle",
                     "INSTCMD ups1 test.nothing", "INSTCMD ups1 beeper.enable", "INSTCMD ups1 load.off.delay",
                     "INSTCMD ups1 load.off.delay soon", "INSTCMD ups1 test.battery.start.quick now",
                     "INSTCMD ups1 test.battery.start.quick", "LOGIN ups1", "FSD ups1"}
            << Lines{"OK", "OK", "ERR ACCESS-DENIED", "ERR CMD-NOT-SUPPORTED", "ERR CMD-NOT-SUPPORTED",
                     "ERR INVALID-ARGUMENT", "ERR INVALID-ARGUMENT", "ERR INVALID-ARGUMENT", "OK",
                     "ERR ACCESS-DENIED", "ERR ACCESS-DENIED"};
        QTest::newRow("secondary monitor")
            << Lines{"USERNAME mon", "PASSWORD monpw", "GET NUMLOGINS ups1", "LOGIN ups1", "LOGIN ups1",
                     "GET NUMLOGINS ups1", "LIST CLIENT ups1", "PRIMARY ups1", "FSD ups1",
                     "INSTCMD ups1 beeper.toggle"}
            << Lines{"OK", "OK", "NUMLOGINS ups1 0", "OK", "ERR ALREADY-LOGGED-IN", "NUMLOGINS ups1 1",
                     "BEGIN LIST CLIENT ups1", "CLIENT ups1 127.0.0.1", "END LIST CLIENT ups1", "ERR ACCESS-DENIED",
                     "ERR ACCESS-DENIED", "ERR ACCESS-DENIED"};
        QTest::newRow("primary monitor")
            << Lines{"USERNAME boss", "PASSWORD bosspw", "PRIMARY ups1", "MASTER ups1", "LOGIN ups1",
                     "GET VAR ups1 ups.status", "FSD ups1", "GET VAR ups1 ups.status"}
            << Lines{"OK", "OK", "OK PRIMARY-GRANTED", "OK MASTER-GRANTED", "OK", "VAR ups1 ups.status \"OL\"",
                     "OK FSD-SET", "VAR ups1 ups.status \"FSD OL\""};
        QTest::newRow("read-only variables")
            << Lines{"USERNAME admin", "PASSWORD adminpw", "SET VAR ups1 ups.load 5", "SET VAR ups1 ups.nothing 5"}
            << Lines{"OK", "OK", "ERR READONLY", "ERR VAR-NOT-SUPPORTED"};
        QTest::newRow("binary junk")
            << Lines{QByteArray("\x01\x02\x7f"), QByteArray("NET\0VER", 7), "\xff\xfe\xfd", "GET VAR ups1 \x1b"}
            << Lines{"ERR INVALID-ARGUMENT", "ERR INVALID-ARGUMENT", "ERR UNKNOWN-COMMAND", "ERR INVALID-ARGUMENT"};
        QTest::newRow("blank lines get no answer") << Lines{"", "  \t ", "\r"} << Lines();
    }

    void protocol()
    {
        QFETCH(Lines, requests);
        QFETCH(Lines, answers);
        ServedHost served;
        QVERIFY(served.start(QStringLiteral("bad name")));
        Points data = sampleData();
        data[UpsPoint::AlarmFirst + UpsAlarm::DiagnosticFailed] = 0; // no alarm: plain OL
        QVERIFY(served.feed(served.ups1, data));
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort());
        QVERIFY(client.connected());
        QCOMPARE(client.exchange(requests), answers);
    }

    void listsMatchTheDecodedData()
    {
        ServedHost served;
        const Points data = sampleData();
        QVERIFY(served.feed(served.ups1, data));
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort());
        QVERIFY(client.connected());

        const Lines vars = client.exchange({"LIST VAR ups1"});
        QVERIFY(vars.size() > 2);
        QCOMPARE(vars.first(), QByteArray("BEGIN LIST VAR ups1"));
        QCOMPARE(vars.last(), QByteArray("END LIST VAR ups1"));
        DeviceSession *session = served.host.session("ups1");
        const auto expected = NutVariables::values(data, session->activeAlarms(), false);
        QCOMPARE(vars.size() - 2, expected.size());
        for (auto it = expected.constBegin(); it != expected.constEnd(); ++it) {
            const QByteArray line = "VAR ups1 " + it.key() + ' ' + NutLine::quote(it.value().toUtf8());
            QVERIFY2(vars.contains(line), line.constData());
        }
        QVERIFY(vars.contains("VAR ups1 ups.alarm \"Last diagnostic test failed\""));

        const Lines commands = client.exchange({"LIST CMD ups1"});
        QCOMPARE(commands.size() - 2, NutCommands::available(data).size());
        QVERIFY(commands.contains("CMD ups1 beeper.disable")); // the buzzer is on
        QVERIFY(!commands.contains("CMD ups1 beeper.enable"));
    }

    void variables_data()
    {
        QTest::addColumn<bool>("threePhase");
        QTest::addColumn<Points>("changes");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("value"); // null: not served
        const Points none;
        QTest::newRow("charge") << false << none << QByteArray("battery.charge") << "100";
        QTest::newRow("battery voltage, tenths") << false << none << QByteArray("battery.voltage") << "272.0";
        QTest::newRow("battery current, signed")
            << false << Points{{UpsPoint::BatteryCurrent, 65526}} << QByteArray("battery.current") << "-1.0";
        QTest::newRow("runtime in seconds") << false << none << QByteArray("battery.runtime") << "1620";
        QTest::newRow("input voltage") << false << none << QByteArray("input.voltage") << "230";
        QTest::newRow("input frequency") << false << none << QByteArray("input.frequency") << "50.0";
        QTest::newRow("output current") << false << none << QByteArray("output.current") << "3.5";
        QTest::newRow("load") << false << none << QByteArray("ups.load") << "35";
        QTest::newRow("temperature") << false << none << QByteArray("ups.temperature") << "25";
        QTest::newRow("model without padding") << false << none << QByteArray("ups.model") << "Tower 11 3kVA";
        QTest::newRow("firmware") << false << none << QByteArray("ups.firmware") << "UPS 2.11.04";
        QTest::newRow("beeper unknown") << false << none << QByteArray("ups.beeper.status") << QString();
        QTest::newRow("beeper on") << false << Points{{UpsPoint::BuzzerState, UpsCode::BuzzerEnabled}}
                                   << QByteArray("ups.beeper.status") << "enabled";
        QTest::newRow("no per-phase names on one phase")
            << false << none << QByteArray("input.L1-N.voltage") << QString();
        QTest::newRow("phase 2 input voltage") << true << none << QByteArray("input.L2-N.voltage") << "231";
        QTest::newRow("phase 3 input current") << true << none << QByteArray("input.L3.current") << "11.5";
        QTest::newRow("phase 3 output current") << true << none << QByteArray("output.L3.current") << "10.6";
        QTest::newRow("phase 2 load") << true << none << QByteArray("output.L2.power.percent") << "36";
        QTest::newRow("no single input voltage on three phases")
            << true << none << QByteArray("input.voltage") << QString();
        QTest::newRow("phases") << true << none << QByteArray("input.phases") << "3";
        QTest::newRow("absent point, absent variable")
            << false << Points{{UpsPoint::BatteryCapacity, QVariant()}} << QByteArray("battery.charge") << QString();
    }

    void variables()
    {
        QFETCH(bool, threePhase);
        QFETCH(Points, changes);
        QFETCH(QByteArray, name);
        QFETCH(QString, value);
        Points data = ViewSampleData::deviceData(threePhase);
        for (auto it = changes.constBegin(); it != changes.constEnd(); ++it) {
            if (it.value().isValid())
                data[it.key()] = it.value();
            else
                data.remove(it.key());
        }
        const auto values = NutVariables::values(data, {}, false);
        QCOMPARE(values.value(name), value);
        QCOMPARE(values.contains(name), !value.isNull());
    }

    void status_data()
    {
        QTest::addColumn<Points>("changes");
        QTest::addColumn<bool>("fsd");
        QTest::addColumn<QString>("status");
        using A = UpsAlarm::Number;
        const int source = UpsPoint::OutputSource;
        auto alarm = [](int number) { return UpsPoint::AlarmFirst + number; };
        QTest::newRow("utility") << Points() << false << "OL";
        QTest::newRow("forced shutdown first") << Points() << true << "FSD OL";
        QTest::newRow("on battery") << Points{{source, UpsCode::SourceBattery}, {alarm(A::OnBattery), 1}} << false
                                    << "ALARM OB DISCHRG";
        QTest::newRow("battery low") << Points{{source, UpsCode::SourceBattery}, {alarm(A::BatteryLow), 1}}
                                     << false << "ALARM OB LB DISCHRG";
        QTest::newRow("battery alarm without source")
            << Points{{source, 0}, {alarm(A::OnBattery), 1}} << false << "ALARM OB DISCHRG";
        QTest::newRow("bypass") << Points{{source, UpsCode::SourceBypass}} << false << "OL BYPASS";
        QTest::newRow("no output") << Points{{source, UpsCode::SourceNone}} << false << "OFF";
        QTest::newRow("output off as requested")
            << Points{{alarm(A::OutputOffAsRequested), 1}} << false << "ALARM OL OFF";
        QTest::newRow("overload") << Points{{alarm(A::OutputOverload), 1}} << false << "ALARM OL OVER";
        QTest::newRow("test running") << Points{{alarm(A::TestInProgress), 1}} << false << "ALARM OL CAL";
        QTest::newRow("battery fault") << Points{{alarm(A::BatteryFault), 1}} << false << "ALARM OL RB";
        QTest::newRow("booster") << Points{{source, UpsCode::SourceBooster}} << false << "OL BOOST";
        QTest::newRow("reducer") << Points{{source, UpsCode::SourceReducer}} << false << "OL TRIM";
        QTest::newRow("low battery code")
            << Points{{UpsPoint::BatteryStatus, UpsCode::BatteryLow}} << false << "OL LB";
        QTest::newRow("float charging")
            << Points{{UpsPoint::BatteryStatus, UpsCode::BatteryFloatCharging}} << false << "OL CHRG";
        QTest::newRow("unknown source") << Points{{source, UpsCode::SourceOther}} << false << "";
    }

    void status()
    {
        QFETCH(Points, changes);
        QFETCH(bool, fsd);
        QFETCH(QString, status);
        Points data = ViewSampleData::deviceData(false);
        data[UpsPoint::AlarmFirst + UpsAlarm::DiagnosticFailed] = 0;
        for (auto it = changes.constBegin(); it != changes.constEnd(); ++it)
            data[it.key()] = it.value();
        QCOMPARE(NutVariables::status(data, fsd), status);
        QCOMPARE(NutVariables::values(data, {}, fsd).contains("ups.status"), !status.isEmpty());
    }

    // Each instant command asks for what the console's word for it asks for.
    void instantCommands_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<int>("buzzer");
        QTest::addColumn<QString>("consoleLine");
        const int on = UpsCode::BuzzerEnabled;
        QTest::newRow("quick test") << QByteArray("test.battery.start.quick") << on << "selftest";
        QTest::newRow("deep test") << QByteArray("test.battery.start.deep") << on << "discharge";
        QTest::newRow("stop test") << QByteArray("test.battery.stop") << on << "cancel";
        QTest::newRow("stay off") << QByteArray("shutdown.stayoff") << on << "shutdown 12";
        QTest::newRow("return") << QByteArray("shutdown.return") << on << "standby 60";
        QTest::newRow("load off for a while") << QByteArray("load.off.delay 300") << on << "standby 300";
        QTest::newRow("cancel shutdown") << QByteArray("shutdown.stop") << on << "cancelshutdown";
        QTest::newRow("toggle beeper") << QByteArray("beeper.toggle") << on << "buzzer";
        QTest::newRow("beeper off") << QByteArray("beeper.disable") << on << "buzzer off";
        QTest::newRow("beeper on") << QByteArray("beeper.enable") << int(UpsCode::BuzzerDisabled) << "buzzer on";
    }

    void instantCommands()
    {
        QFETCH(QByteArray, request);
        QFETCH(int, buzzer);
        QFETCH(QString, consoleLine);
        ServedHost served;
        Points data = sampleData();
        data[UpsPoint::BuzzerState] = buzzer;
        QVERIFY(served.feed(served.ups1, data));
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort());
        QVERIFY(client.connected());
        QCOMPARE(client.exchange({"USERNAME admin", "PASSWORD adminpw", "INSTCMD ups1 " + request}),
                 (Lines{"OK", "OK", "OK"}));
        const ConsoleCommand console = ConsoleCommand::parse(consoleLine, {QStringLiteral("ups1")});
        QCOMPARE(console.kind, ConsoleCommand::Kind::Control);
        QTRY_COMPARE_WITH_TIMEOUT(served.ups1->controls.size(), 1, kAnswerMs);
        QCOMPARE(served.ups1->controls.first(), qMakePair(console.controlId, console.value));
    }

    void beeperCommandsFollowTheBuzzer_data()
    {
        QTest::addColumn<int>("buzzer");
        QTest::addColumn<QStringList>("beeperCommands");
        QTest::newRow("unknown") << 0 << QStringList{"beeper.toggle"};
        QTest::newRow("off") << int(UpsCode::BuzzerDisabled) << QStringList{"beeper.enable", "beeper.toggle"};
        QTest::newRow("on") << int(UpsCode::BuzzerEnabled) << QStringList{"beeper.disable", "beeper.toggle"};
    }

    void beeperCommandsFollowTheBuzzer()
    {
        QFETCH(int, buzzer);
        QFETCH(QStringList, beeperCommands);
        const QStringList offered = NutCommands::available({{UpsPoint::BuzzerState, buzzer}});
        QCOMPARE(offered.filter(QRegularExpression("^beeper\\.")), beeperCommands);
        QVERIFY(offered.contains("test.battery.start.quick"));
    }

    void unavailableData_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QByteArray>("error");
        QTest::newRow("nothing received yet") << "none" << QByteArray("ERR DRIVER-NOT-CONNECTED");
        QTest::newRow("communication lost") << "lost" << QByteArray("ERR DRIVER-NOT-CONNECTED");
        QTest::newRow("no full rotation yet") << "partial" << QByteArray("ERR DATA-STALE");
        QTest::newRow("answers too old") << "old" << QByteArray("ERR DATA-STALE");
    }

    void unavailableData()
    {
        QFETCH(QString, situation);
        QFETCH(QByteArray, error);
        ServedHost served;
        Points data = sampleData();
        if (situation == QLatin1String("partial"))
            data.remove(UpsPoint::Model);
        if (situation != QLatin1String("none"))
            QVERIFY(served.feed(served.ups1, data));
        if (situation == QLatin1String("lost")) {
            QMutexLocker locker(&served.ups1->mutex);
            served.ups1->upsInfo.insert(UpsInfo::State, UpsInfo::CommunicationLost);
        }
        if (situation == QLatin1String("old"))
            served.server.setStaleRule("ups1", StaleRule(1, 0)); // stale once a second has passed
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort());
        QVERIFY(client.connected());
        QTRY_COMPARE_WITH_TIMEOUT(client.exchange({"GET VAR ups1 ups.status"}), Lines{error}, kAnswerMs);
        const Lines requests{"LIST VAR ups1", "USERNAME admin", "PASSWORD adminpw", "INSTCMD ups1 beeper.toggle"};
        QCOMPARE(client.exchange(requests), (Lines{error, "OK", "OK", error}));
        QVERIFY(served.ups1->controls.isEmpty());
        // Descriptions and the command list need no data.
        QCOMPARE(client.exchange({"GET NUMLOGINS ups1", "LIST CMD ups1"}).value(1), QByteArray("BEGIN LIST CMD ups1"));
    }

    void staleRule_data()
    {
        QTest::addColumn<int>("interval");
        QTest::addColumn<int>("tickSeconds");
        QTest::addColumn<int>("threshold");
        QTest::newRow("not set: the client's 5 s") << -1 << 1 << 12;
        QTest::newRow("0") << 0 << 1 << 12;
        QTest::newRow("15") << 15 << 1 << 12;
        QTest::newRow("16") << 16 << 1 << 12;
        QTest::newRow("60") << 60 << 3 << 36;
        QTest::newRow("100") << 100 << 6 << 72;
    }

    void staleRule()
    {
        QFETCH(int, interval);
        QFETCH(int, tickSeconds);
        QFETCH(int, threshold);
        QCOMPARE(StaleRule::tickSeconds(interval), tickSeconds);
        const StaleRule rule(interval);
        QCOMPARE(rule.thresholdSeconds(), threshold);
        const QDateTime now = QDateTime::currentDateTime();
        QVERIFY(!rule.isStale(now.addSecs(-threshold), now));
        QVERIFY(rule.isStale(now.addSecs(-threshold - 1), now));
        QVERIFY(!rule.isStale(QDateTime(), now));
    }

    void users_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("user");
        QTest::addColumn<QByteArray>("password");
        QTest::addColumn<QString>("rights"); // login, primary, fsd, may run beeper.toggle
        QTest::addColumn<int>("problems");
        QTest::newRow("no file: nothing") << QByteArray() << QByteArray("admin") << QByteArray("adminpw") << "----" << 0;
        QTest::newRow("all commands") << kUsers << QByteArray("admin") << QByteArray("adminpw") << "---R" << 0;
        QTest::newRow("wrong password") << kUsers << QByteArray("admin") << QByteArray("x") << "----" << 0;
        QTest::newRow("primary") << kUsers << QByteArray("boss") << QByteArray("bosspw") << "LPF-" << 0;
        QTest::newRow("secondary") << kUsers << QByteArray("mon") << QByteArray("monpw") << "L---" << 0;
        QTest::newRow("quoted password with a hash")
            << QByteArray("[a]\n password = \"x # y\" # comment\n upsmon master\n") << QByteArray("a")
            << QByteArray("x # y") << "LPF-" << 0;
        QTest::newRow("an empty password never matches")
            << QByteArray("[a]\npassword = \"\"\ninstcmds = ALL\n") << QByteArray("a") << QByteArray() << "----" << 0;
        QTest::newRow("comma list") << QByteArray("[a]\npassword=p\ninstcmds = x.y,beeper.toggle\nactions = SET fsd\n")
                                    << QByteArray("a") << QByteArray("p") << "--FR" << 0;
        QTest::newRow("later section replaces")
            << QByteArray("[a]\npassword=p\nupsmon primary\n[a]\npassword=p\n") << QByteArray("a") << QByteArray("p")
            << "----" << 0;
        QTest::newRow("settings outside a section, unknown keys")
            << QByteArray("password=p\n[a]\npassword=p\nupsmon boss\ncolour=red\n[]\n") << QByteArray("a")
            << QByteArray("p") << "----" << 4;
        QTest::newRow("unterminated quote") << QByteArray("[a]\npassword = \"p\n") << QByteArray("a")
                                            << QByteArray("\"p") << "----" << 1;
    }

    void users()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, user);
        QFETCH(QByteArray, password);
        QFETCH(QString, rights);
        QFETCH(int, problems);
        NutUsers parsed;
        QStringList found;
        parsed.parse(text, &found);
        QCOMPARE(found.size(), problems);
        const NutUsers::User *account = parsed.authenticate(user, password);
        const QString got = QString(NutUsers::mayLogin(account) ? "L" : "-") + (NutUsers::mayBePrimary(account) ? "P" : "-")
                            + (NutUsers::maySetFsd(account) ? "F" : "-")
                            + (NutUsers::mayRun(account, "beeper.toggle") ? "R" : "-");
        QCOMPARE(got, rights);
    }

    void usersFileBesideDevIni()
    {
        QTemporaryDir dir;
        const QString devIni = dir.filePath("db/dev.ini");
        QCOMPARE(NutServer::usersFilePath(devIni), dir.filePath("db/upsd.users"));
        NutUsers loaded;
        QVERIFY(!loaded.load(dir.filePath("db/upsd.users"))); // missing
        QVERIFY(HostTest::writeFile(dir.filePath("big.users"), QByteArray(NutUsers::MaxFileBytes + 1, '#')));
        QVERIFY(!loaded.load(dir.filePath("big.users")));
        QCOMPARE(loaded.count(), 0);
    }

    void lineBounds_data()
    {
        QTest::addColumn<Lines>("chunks"); // written one after the other
        QTest::addColumn<Lines>("answers");
        const int max = NutConnection::MaxLineBytes;
        const QByteArray request = "GET UPSDESC nope";
        QTest::newRow("longest line taken") << Lines{request + QByteArray(max - request.size(), ' ') + "\n"}
                                            << Lines{"ERR UNKNOWN-UPS"};
        QTest::newRow("one byte more") << Lines{"NETVER" + QByteArray(max - 5, ' ') + "\n"}
                                       << Lines{"ERR INVALID-ARGUMENT"};
        QTest::newRow("long line in pieces, one answer")
            << repeated(40, QByteArray(1000, 'x')) << Lines{"ERR INVALID-ARGUMENT"};
        QTest::newRow("line end CR LF") << Lines{"GET VAR nope ups.load\r\n"} << Lines{"ERR UNKNOWN-UPS"};
        QTest::newRow("lines split anywhere") << Lines{"GET VA", "R nope", " ups.load\nLIS", "T\n"}
                                              << Lines{"ERR UNKNOWN-UPS", "ERR INVALID-ARGUMENT"};
    }

    void lineBounds()
    {
        QFETCH(Lines, chunks);
        QFETCH(Lines, answers);
        ServedHost served;
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort());
        QVERIFY(client.connected());
        for (const QByteArray &chunk : chunks) {
            client.write(chunk);
            QVERIFY(client.socket().waitForBytesWritten(kAnswerMs));
            QTest::qWait(1); // let the server take each piece on its own
        }
        // A long line's tail ends at the next line end.
        const bool openLine = !chunks.last().endsWith('\n');
        QCOMPARE(client.exchange(openLine ? Lines{""} : Lines()), answers);
    }

    void tooManyClients()
    {
        ServedHost served;
        served.server.setMaxClients(2);
        QVERIFY(served.listen());
        auto first = std::make_unique<RawClient>(served.server.serverPort());
        RawClient second(served.server.serverPort());
        QVERIFY(first->connected() && second.connected());
        QCOMPARE(first->exchange({}), Lines());
        QCOMPARE(second.exchange({}), Lines());
        RawClient third(served.server.serverPort());
        QCOMPARE(third.readUntil("ERR ACCESS-DENIED"), Lines{"ERR ACCESS-DENIED"});
        QVERIFY(third.closedByServer());
        QCOMPARE(served.server.clientCount(), 2);

        first.reset();
        QTRY_COMPARE_WITH_TIMEOUT(served.server.clientCount(), 1, kAnswerMs);
        RawClient fourth(served.server.serverPort());
        QVERIFY(fourth.connected());
        QCOMPARE(fourth.exchange({"GET UPSDESC nope"}), Lines{"ERR UNKNOWN-UPS"});
    }

    void clientThatNeverReadsIsDropped()
    {
        ServedHost served;
        QVERIFY(served.feed(served.ups1, sampleData()));
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort(), 1024); // takes at most 1 KiB off the network
        QVERIFY(client.connected());
        QTRY_COMPARE_WITH_TIMEOUT(served.server.clientCount(), 1, kAnswerMs);
        // Each request asks for about a kilobyte: far more than the socket buffers hold.
        const QByteArray burst = QByteArray("LIST VAR ups1\n").repeated(2000);
        for (int i = 0; i < 40 && served.server.clientCount() == 1; ++i) {
            client.write(burst);
            QTest::qWait(50);
        }
        QTRY_COMPARE_WITH_TIMEOUT(served.server.clientCount(), 0, kAnswerMs);
    }

    void logoutCloses()
    {
        ServedHost served;
        QVERIFY(served.listen());
        RawClient client(served.server.serverPort());
        QVERIFY(client.connected());
        client.write("LOGOUT\nNETVER\n");
        QCOMPARE(client.readUntil("OK Goodbye"), Lines{"OK Goodbye"});
        QVERIFY(client.closedByServer());
        QVERIFY(!client.socket().canReadLine()); // nothing after the goodbye
    }

    void busyPortIsReported()
    {
        ServedHost served;
        QVERIFY(served.listen());
        NutServer second(&served.host);
        QVERIFY(!second.listen(QHostAddress::LocalHost, served.server.serverPort()));
        QVERIFY(!second.errorString().isEmpty());
    }

    // Debian's NUT clients against the host polling the simulated agent through the plug-in.
    void realClients()
    {
        const QString upsc = QStandardPaths::findExecutable("upsc");
        const QString upscmd = QStandardPaths::findExecutable("upscmd");
        if (upsc.isEmpty() || upscmd.isEmpty())
            QSKIP("nut-client is not installed (tools/bootstrap.sh installs it)");

        UpsSimulator agent(UpsSimulator::Profile::Single);
        agent.setJitterEnabled(false);
        QVERIFY(agent.start(QStringLiteral("127.0.0.1"), 0));
        const QString device = QStringLiteral("ups1");
        const DeviceEntry entry = HostTest::writeDevice(device, agent.port(), 5);
        const auto cleanup = qScopeGuard([device] { removeDeviceConfig(device); });
        QTemporaryDir logs;
        DeviceHost host(logs.path());
        QCOMPARE(host.loadPlugins(builtBinaryDir()), 1);
        QCOMPARE(host.startDevices({entry}), 1);
        NutServer server(&host);
        server.setUsers(testUsers());
        server.setPollInterval(device, 1);
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        const QString target = QStringLiteral("ups1@127.0.0.1:%1").arg(server.serverPort());
        QTRY_VERIFY_WITH_TIMEOUT(host.session(device)->hasFullPicture(), kConnectMs);

        int exitCode = 0;
        QString out;
        // The server lives in this thread: wait for the client with the event loop turning.
        // Standard output apart: upsc may say things about TLS on its error channel.
        QString errors;
        auto run = [&](const QString &program, const QStringList &arguments) {
            QProcess process;
            process.start(program, arguments);
            const bool finished = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; },
                                                  kProcessMs);
            if (!finished) {
                process.kill();
                process.waitForFinished();
            }
            exitCode = finished && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
            errors = QString::fromUtf8(process.readAllStandardError());
            return QString::fromUtf8(process.readAllStandardOutput());
        };

        out = run(upsc, {"-l", QStringLiteral("127.0.0.1:%1").arg(server.serverPort())});
        QCOMPARE(exitCode, 0);
        QCOMPARE(out.trimmed(), device);

        out = run(upsc, {target, "ups.status"});
        QCOMPARE(exitCode, 0);
        QCOMPARE(out.trimmed(), QStringLiteral("OL"));

        out = run(upsc, {target});
        QCOMPARE(exitCode, 0);
        QMap<QString, QString> shown;
        for (const QString &line : out.split('\n', Qt::SkipEmptyParts)) {
            const int colon = line.indexOf(QLatin1String(": "));
            if (colon > 0)
                shown.insert(line.left(colon), line.mid(colon + 2));
        }
        QCOMPARE(shown.value("device.type"), QStringLiteral("ups"));
        QCOMPARE(shown.value("battery.charge"), QString::number(agent.measurement(UpsPoint::BatteryCapacity)));
        QCOMPARE(shown.value("battery.voltage"),
                 QString::number(agent.measurement(UpsPoint::BatteryVoltage) / 10.0, 'f', 1));
        QCOMPARE(shown.value("input.voltage"), QString::number(agent.measurement(UpsPoint::InputVoltage)));
        QCOMPARE(shown.value("output.frequency"),
                 QString::number(agent.measurement(UpsPoint::OutputFrequency) / 10.0, 'f', 1));
        QCOMPARE(shown.value("battery.runtime"),
                 QString::number(agent.measurement(UpsPoint::RemainingMinutes) * 60));
        QCOMPARE(shown.value("ups.model"), DeviceSession::identityText(agent.identityText(UpsPoint::Model)));

        // upscmd sends the password unquoted: one word only.
        out = run(upscmd, {"-u", "admin", "-p", "wrong", target, "test.battery.start.quick"});
        QVERIFY2(exitCode != 0 && (out + errors).contains("ERR ACCESS-DENIED"),
                 qPrintable(out + errors));
        out = run(upscmd, {"-u", "admin", "-p", "adminpw", target, "test.nothing"});
        QVERIFY2(exitCode != 0 && (out + errors).contains("ERR CMD-NOT-SUPPORTED"),
                 qPrintable(out + errors));
        QVERIFY(agent.writes().isEmpty());

        out = run(upscmd, {"-u", "admin", "-p", "adminpw", target, "test.battery.start.quick"});
        QVERIFY2(exitCode == 0 && (out + errors).trimmed() == "OK", qPrintable(QString::number(exitCode) + out + errors));
        QTRY_COMPARE_WITH_TIMEOUT(agent.writes().size(), 1, kConnectMs);
        QCOMPARE(QList<int>({agent.writes().first().reg, agent.writes().first().value}),
                 QList<int>({UpsCommandRegister::SelfTest, 0xFFFF}));

        host.shutdown();
    }
};

QTEST_MAIN(TestHostNut)
#include "tst_host_nut.moc"
