// What the host adds around a device's commands and events: verdicts on whether a control
// command showed its effect in the decoded data, and the command run for every logged event
// (environment, bounded queue, timeout, failures told once).
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QtTest>

#include "commandwatch.h"
#include "eventhook.h"
#include "hostoptions.h"
#include "hosttestsupport.h"
#include "nutserver.h"
#include "nutusers.h"
#include "viewsampledata.h"
#include "upsalarms.h"
#include "upspoints.h"

using Points = QMap<int, QVariant>;
using Sequence = QList<Points>;

namespace {

constexpr int kShortBoundMs = 300;
constexpr int kVerdictMs = 5000;
constexpr int kHookMs = 10000;

constexpr int alarm(int number)
{
    return UpsPoint::AlarmFirst + number;
}

const int kTest = alarm(UpsAlarm::TestInProgress);
const int kPending = alarm(UpsAlarm::ShutdownPending);
const int kOutputOff = alarm(UpsAlarm::OutputOff);
const int kSystemOff = alarm(UpsAlarm::SystemOff);

// A shell word: the path in single quotes.
QString quoted(const QString &path)
{
    return QLatin1Char('\'') + path + QLatin1Char('\'');
}

// Sends one NUT request and returns its one-line answer (empty when none came).
QByteArray ask(QTcpSocket &socket, const QByteArray &request)
{
    socket.write(request + '\n');
    if (!QTest::qWaitFor([&socket] { return socket.canReadLine(); }, kVerdictMs))
        return QByteArray();
    return socket.readLine().trimmed();
}

QString readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class TestHostGateway : public QObject
{
    Q_OBJECT

private slots:
    void verdicts_data()
    {
        QTest::addColumn<int>("command");
        QTest::addColumn<Points>("before");   // the device's data at the request
        QTest::addColumn<Sequence>("answers"); // decoded afterwards, in order
        QTest::addColumn<bool>("confirmed");

        const Points idle{{kTest, 0}, {kPending, 0}, {kOutputOff, 0}, {kSystemOff, 0},
                          {UpsPoint::OutputSource, UpsCode::SourceUtility}, {UpsPoint::BuzzerState, 2}};
        auto with = [&idle](std::initializer_list<std::pair<int, int>> changes) {
            Points p = idle;
            for (const auto &c : changes)
                p[c.first] = c.second;
            return p;
        };
        const Points testing = with({{kTest, 1}});
        const Points pending = with({{kPending, 1}});

        QTest::newRow("self-test, alarm raised after an old answer")
            << int(UpsControl::SelfTest) << idle << Sequence{idle, testing} << true;
        QTest::newRow("self-test, nothing happens") << int(UpsControl::SelfTest) << idle << Sequence{idle, idle} << false;
        QTest::newRow("self-test while a test runs: no new edge")
            << int(UpsControl::SelfTest) << testing << Sequence{testing} << false;
        QTest::newRow("discharge to low, alarm raised")
            << int(UpsControl::DischargeToLow) << idle << Sequence{testing} << true;
        QTest::newRow("timed discharge, alarm raised") << int(UpsControl::Discharge) << idle << Sequence{testing} << true;
        QTest::newRow("cancel test, alarm cleared") << int(UpsControl::CancelTest) << testing << Sequence{idle} << true;
        QTest::newRow("cancel test, test goes on")
            << int(UpsControl::CancelTest) << testing << Sequence{testing} << false;
        QTest::newRow("cancel test without a test") << int(UpsControl::CancelTest) << idle << Sequence{testing, testing}
                                                    << false;
        QTest::newRow("shutdown, countdown starts") << int(UpsControl::Shutdown) << idle << Sequence{pending} << true;
        QTest::newRow("shutdown at once, output source none")
            << int(UpsControl::Shutdown) << idle << Sequence{with({{UpsPoint::OutputSource, UpsCode::SourceNone}})}
            << true;
        QTest::newRow("shutdown, mains fail instead")
            << int(UpsControl::Shutdown) << idle << Sequence{with({{UpsPoint::OutputSource, UpsCode::SourceBattery}})}
            << false;
        QTest::newRow("standby, system off") << int(UpsControl::Standby) << idle
                                             << Sequence{with({{kSystemOff, 1}, {kOutputOff, 1}})} << true;
        QTest::newRow("standby refused") << int(UpsControl::Standby) << idle << Sequence{idle} << false;
        QTest::newRow("cancel shutdown, countdown cleared")
            << int(UpsControl::CancelShutdown) << pending << Sequence{idle} << true;
        QTest::newRow("cancel shutdown, output back on")
            << int(UpsControl::CancelShutdown) << with({{kOutputOff, 1}}) << Sequence{idle} << true;
        QTest::newRow("cancel shutdown too late: countdown ends in output off")
            << int(UpsControl::CancelShutdown) << pending << Sequence{with({{kOutputOff, 1}})} << false;
        QTest::newRow("buzzer flips") << int(UpsControl::Buzzer) << idle
                                      << Sequence{with({{UpsPoint::BuzzerState, 1}})} << true;
        QTest::newRow("buzzer unchanged") << int(UpsControl::Buzzer) << idle << Sequence{idle, idle} << false;
        QTest::newRow("no data before: the first answer is only the reference")
            << int(UpsControl::SelfTest) << Points() << Sequence{testing} << false;
        QTest::newRow("no data before, then the edge")
            << int(UpsControl::SelfTest) << Points() << Sequence{idle, testing} << true;
        QTest::newRow("answers without alarm bits keep the reference")
            << int(UpsControl::SelfTest) << idle << Sequence{Points{{UpsPoint::BatteryCapacity, 90}}, testing} << true;
    }

    void verdicts()
    {
        QFETCH(int, command);
        QFETCH(Points, before);
        QFETCH(Sequence, answers);
        QFETCH(bool, confirmed);

        CommandWatch watch;
        QSignalSpy verdicts(&watch, &CommandWatch::verdict);
        watch.watch(QStringLiteral("ups1"), command, before, kShortBoundMs);
        QCOMPARE(watch.pendingCount(), 1);
        for (const Points &answer : answers)
            watch.addData(QStringLiteral("ups1"), answer);
        QTRY_COMPARE_WITH_TIMEOUT(verdicts.size(), 1, kVerdictMs);
        QCOMPARE(verdicts.first().at(0).toString(), QStringLiteral("ups1"));
        QCOMPARE(verdicts.first().at(1).toInt(), command);
        QCOMPARE(verdicts.first().at(2).toBool(), confirmed);
        QCOMPARE(watch.pendingCount(), 0);
        // One verdict per request: later answers and the bound change nothing.
        watch.addData(QStringLiteral("ups1"), before);
        QTest::qWait(kShortBoundMs); // past the bound of a request still watched
        QCOMPARE(verdicts.size(), 1);
    }

    void repeatedRequestStartsOver()
    {
        CommandWatch watch;
        QSignalSpy verdicts(&watch, &CommandWatch::verdict);
        watch.watch(QStringLiteral("ups1"), UpsControl::SelfTest, {{kTest, 0}}, kShortBoundMs);
        watch.watch(QStringLiteral("ups1"), UpsControl::SelfTest, {{kTest, 0}}, kShortBoundMs);
        watch.watch(QStringLiteral("ups1"), UpsControl::Buzzer, {{UpsPoint::BuzzerState, 1}}, kShortBoundMs);
        watch.watch(QStringLiteral("ups1"), UpsControl::TimeSet, {{kTest, 0}}, kShortBoundMs); // no visible effect
        QCOMPARE(watch.pendingCount(), 2);
        watch.forget(QStringLiteral("ups1"), UpsControl::Buzzer);
        watch.addData(QStringLiteral("ups2"), {{kTest, 1}}); // another device's answers do not count
        watch.addData(QStringLiteral("ups2"), {{kTest, 0}});
        watch.addData(QStringLiteral("ups2"), {{kTest, 1}});
        QCOMPARE(watch.pendingCount(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(verdicts.size(), 1, kVerdictMs);
        QCOMPARE(verdicts.first().at(2).toBool(), false);
        QTest::qWait(2 * kShortBoundMs);
        QCOMPARE(verdicts.size(), 1);
    }

    // Through the host: the request of a scripted client's device, its data, the logged event.
    void hostLogsTheVerdict()
    {
        ScriptedHost scripted;
        ScriptedClient *client = scripted.start(QStringLiteral("ups1"));
        QVERIFY(client);
        DeviceSession *session = scripted.host.session(QStringLiteral("ups1"));
        QSignalSpy logged(&scripted.host, &DeviceHost::eventLogged);

        client->sendData({{kTest, 0}});
        QTRY_VERIFY_WITH_TIMEOUT(!session->latestData().isEmpty(), kVerdictMs);
        session->requestControl(UpsControl::SelfTest, QString());
        QCOMPARE(scripted.host.commandWatch()->pendingCount(), 1);
        client->sendData({{kTest, 1}});
        QTRY_COMPARE_WITH_TIMEOUT(scripted.host.commandWatch()->pendingCount(), 0, kVerdictMs);

        QList<int> types;
        QStringList texts;
        for (const QList<QVariant> &args : qAsConst(logged)) {
            types << args.at(2).toInt();
            texts << args.at(3).toString();
        }
        QVERIFY2(types.contains(DeviceHost::CommandConfirmed), qPrintable(texts.join('|')));
        QVERIFY(texts.contains(QStringLiteral("Selftest: confirmed by the device")));
        QVERIFY(!types.contains(DeviceHost::CommandNotConfirmed));

        // A command the client could not send gets its failed result, not a verdict.
        session->requestControl(UpsControl::Buzzer, QStringLiteral("1"));
        QCOMPARE(scripted.host.commandWatch()->pendingCount(), 1);
        emit client->postDEvent(UpsEvent::CommandResult,
                                {{UpsKey::CmdId, int(UpsControl::Buzzer)}, {UpsKey::Result, 0}});
        QTRY_COMPARE_WITH_TIMEOUT(scripted.host.commandWatch()->pendingCount(), 0, kVerdictMs);
        scripted.host.shutdown();
    }

    // NUT clients that ask for tracking learn whether the device showed the command's effect.
    void nutTracking()
    {
        ScriptedHost scripted;
        ScriptedClient *client = scripted.start(QStringLiteral("ups1"));
        QVERIFY(client);
        DeviceSession *session = scripted.host.session(QStringLiteral("ups1"));
        Points data = ViewSampleData::deviceData(false);
        data[kTest] = 0;
        client->sendData(data);
        QTRY_VERIFY_WITH_TIMEOUT(session->hasFullPicture(), kVerdictMs);

        NutServer server(&scripted.host);
        NutUsers users;
        users.parse("[admin]\n    password = adminpw\n    instcmds = ALL\n");
        server.setUsers(users);
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, server.serverPort());
        QVERIFY(socket.waitForConnected(kVerdictMs));

        QCOMPARE(ask(socket, "INSTCMD ups1 test.battery.start.quick"), QByteArray("ERR USERNAME-REQUIRED"));
        QCOMPARE(ask(socket, "USERNAME admin"), QByteArray("OK"));
        QCOMPARE(ask(socket, "PASSWORD adminpw"), QByteArray("OK"));
        QCOMPARE(ask(socket, "INSTCMD ups1 test.battery.start.quick"), QByteArray("OK")); // tracking is off
        QCOMPARE(ask(socket, "SET TRACKING MAYBE"), QByteArray("ERR INVALID-ARGUMENT"));
        QCOMPARE(ask(socket, "SET TRACKING ON"), QByteArray("OK"));
        QCOMPARE(ask(socket, "GET TRACKING 0123"), QByteArray("ERR UNKNOWN"));

        const QByteArray started = ask(socket, "INSTCMD ups1 test.battery.start.quick");
        QVERIFY2(started.startsWith("OK TRACKING "), started.constData());
        const QByteArray testId = started.mid(int(qstrlen("OK TRACKING ")));
        QCOMPARE(ask(socket, "GET TRACKING " + testId), QByteArray("PENDING"));
        data[kTest] = 1;
        client->sendData(data);
        QTRY_COMPARE_WITH_TIMEOUT(ask(socket, "GET TRACKING " + testId), QByteArray("SUCCESS"), kVerdictMs);

        // Not sent by the client: failed at once, not after the bound.
        const QByteArray beeper = ask(socket, "INSTCMD ups1 beeper.toggle");
        QVERIFY2(beeper.startsWith("OK TRACKING "), beeper.constData());
        const QByteArray beeperId = beeper.mid(int(qstrlen("OK TRACKING ")));
        QVERIFY(beeperId != testId);
        emit client->postDEvent(UpsEvent::CommandResult, {{UpsKey::CmdId, int(UpsControl::Buzzer)}, {UpsKey::Result, 0}});
        QTRY_COMPARE_WITH_TIMEOUT(ask(socket, "GET TRACKING " + beeperId), QByteArray("ERR FAILED"), kVerdictMs);
        QCOMPARE(ask(socket, "GET TRACKING " + testId), QByteArray("SUCCESS"));

        QCOMPARE(ask(socket, "SET TRACKING OFF"), QByteArray("OK"));
        QCOMPARE(ask(socket, "INSTCMD ups1 test.battery.stop"), QByteArray("OK"));
        scripted.host.shutdown();
    }

    void eventOption_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("ok");
        QTest::newRow("none") << QStringList() << QString() << true;
        QTest::newRow("a command") << QStringList{"--on-event", "logger -t ups"} << "logger -t ups" << true;
        QTest::newRow("empty") << QStringList{"--on-event= "} << " " << false;
    }

    void eventOption()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, command);
        QFETCH(bool, ok);
        const HostOptions options = HostOptions::parse(QStringList{"orvek-host"} + arguments);
        QCOMPARE(options.ok, ok);
        if (ok)
            QCOMPARE(options.eventCommand, command);
        else
            QVERIFY(options.error.contains("--on-event"));
    }

    void hookPassesTheEvent()
    {
        QTemporaryDir dir;
        const QString out = dir.filePath("events");
        QVERIFY(QDir().mkpath(out));
        // The text reaches the command as data: quotes, $ and ; are not run.
        EventHook hook(QStringLiteral("printf '%s|%s|%s|%s' \"$ORVEK_DEVICE\" \"$ORVEK_EVENT\" \"$ORVEK_TEXT\" "
                                      "\"$ORVEK_TIME\" > %1/\"$ORVEK_EVENT\"")
                           .arg(quoted(out)));
        QSignalSpy notices(&hook, &EventHook::noticeRaised);
        const QDateTime time(QDate(2026, 3, 4), QTime(5, 6, 7));
        const QString text = QStringLiteral("Battery low; \"a\" 'b' $HOME `id`");
        hook.run(time, QStringLiteral("ups 1"), 2006, text);
        hook.run(time.addSecs(1), QStringLiteral("ups2"), DeviceHost::CommandConfirmed, QStringLiteral("ok"));
        QTRY_VERIFY_WITH_TIMEOUT(hook.isIdle(), kHookMs);
        QCOMPARE(readAll(out + "/2006"), QStringLiteral("ups 1|2006|%1|2026-03-04T05:06:07").arg(text));
        QCOMPARE(readAll(out + "/3003"), QStringLiteral("ups2|3003|ok|2026-03-04T05:06:08"));
        QCOMPARE(notices.size(), 0);
        QCOMPARE(hook.failedCount(), 0);
    }

    void hookQueueIsBounded()
    {
        QTemporaryDir dir;
        const QString gate = dir.filePath("gate");
        const QString runs = dir.filePath("runs");
        // Each run waits for the gate (at most the timeout), then counts itself.
        EventHook hook(QStringLiteral("while [ ! -e %1 ]; do sleep 0.05; done; echo \"$ORVEK_EVENT\" >> %2")
                           .arg(quoted(gate), quoted(runs)));
        hook.setLimits(2, 3, kHookMs);
        QSignalSpy notices(&hook, &EventHook::noticeRaised);
        for (int i = 0; i < 10; ++i)
            hook.run(QDateTime::currentDateTime(), QStringLiteral("ups1"), i, QStringLiteral("e"));
        QCOMPARE(hook.runningCount(), 2);
        QCOMPARE(hook.queuedCount(), 3);
        QCOMPARE(hook.droppedCount(), 5);
        QCOMPARE(notices.size(), 1); // told once, not per dropped event
        QVERIFY(notices.first().first().toString().contains("3"));

        QVERIFY(HostTest::writeFile(gate, QByteArray()));
        QTRY_VERIFY_WITH_TIMEOUT(hook.isIdle(), kHookMs);
        QStringList done = readAll(runs).split('\n', Qt::SkipEmptyParts);
        done.sort();
        QCOMPARE(done, (QStringList{"0", "1", "2", "3", "4"}));
        QCOMPARE(hook.failedCount(), 0);

        // Caught up: a new overflow is told again.
        QFile::remove(gate);
        for (int i = 0; i < 6; ++i)
            hook.run(QDateTime::currentDateTime(), QStringLiteral("ups1"), i, QStringLiteral("e"));
        QCOMPARE(hook.droppedCount(), 6);
        QCOMPARE(notices.size(), 2);
        QVERIFY(HostTest::writeFile(gate, QByteArray()));
        QTRY_VERIFY_WITH_TIMEOUT(hook.isIdle(), kHookMs);
    }

    void hookKillsAfterTimeout()
    {
        EventHook hook(QStringLiteral("sleep 30"));
        hook.setLimits(2, 10, kShortBoundMs);
        QSignalSpy notices(&hook, &EventHook::noticeRaised);
        QElapsedTimer clock;
        clock.start();
        hook.run(QDateTime::currentDateTime(), QStringLiteral("ups1"), 1041, QStringLiteral("lost"));
        hook.run(QDateTime::currentDateTime(), QStringLiteral("ups1"), 1040, QStringLiteral("back"));
        QTRY_VERIFY_WITH_TIMEOUT(hook.isIdle(), kHookMs);
        QVERIFY(clock.elapsed() < kHookMs); // far below the command's own 30 s
        QCOMPARE(hook.failedCount(), 2);
        QCOMPARE(notices.size(), 1);
        QVERIFY2(notices.first().first().toString().contains("killed"), qPrintable(notices.first().first().toString()));
    }

    void hookFailuresToldOncePerStreak_data()
    {
        QTest::addColumn<QString>("failing"); // what the command does when it fails
        QTest::addColumn<QString>("told");
        QTest::newRow("exit code") << "exit 3" << "exit code 3";
        QTest::newRow("not found") << "/nonexistent/notify" << "exit code 127";
        QTest::newRow("killed by a signal") << "kill -9 $$" << "crashed";
    }

    void hookFailuresToldOncePerStreak()
    {
        QFETCH(QString, failing);
        QFETCH(QString, told);
        QTemporaryDir dir;
        const QString mode = dir.filePath("mode");
        // Fails while the mode file says so, succeeds otherwise.
        EventHook hook(QStringLiteral("if [ \"$(cat %1)\" = fail ]; then %2; fi").arg(quoted(mode), failing));
        hook.setLimits(1, 10, kHookMs);
        QSignalSpy notices(&hook, &EventHook::noticeRaised);
        auto runAll = [&hook](int count) {
            for (int i = 0; i < count; ++i)
                hook.run(QDateTime::currentDateTime(), QStringLiteral("ups1"), 2006, QStringLiteral("x"));
            return QTest::qWaitFor([&hook] { return hook.isIdle(); }, kHookMs);
        };

        QVERIFY(HostTest::writeFile(mode, "fail"));
        QVERIFY(runAll(3));
        QCOMPARE(hook.failedCount(), 3);
        QCOMPARE(notices.size(), 1);
        QVERIFY2(notices.first().first().toString().contains(told), qPrintable(notices.first().first().toString()));

        QVERIFY(HostTest::writeFile(mode, "pass"));
        QVERIFY(runAll(1));
        QCOMPARE(notices.size(), 1);
        QVERIFY(HostTest::writeFile(mode, "fail"));
        QVERIFY(runAll(2));
        QCOMPARE(hook.failedCount(), 5);
        QCOMPARE(notices.size(), 2); // a new streak is told again
    }
};

QTEST_MAIN(TestHostGateway)
#include "tst_host_gateway.moc"
