// Debian's upsmon, as a secondary, watching the host's NUT server while the simulated agent
// loses mains power and runs its battery down: upsmon is told "on battery" and then shuts
// the machine down (here: runs a script) once the status reads OB LB.
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include "hosttestsupport.h"
#include "nutserver.h"
#include "nutvariables.h"
#include "upssimulator.h"

namespace {

constexpr int kConnectMs = 20000;     // a 1 s tick, the client's 5 s pause before connecting, a rotation
constexpr int kBatteryLowMs = 60000;  // the scenario's battery runs down well within this
constexpr int kStopMs = 5000;
// The scenario plays this much faster than real time, so that its battery runs
// down in well under a minute.
constexpr double kTimeScale = 6.0;

const char kUpsmonPath[] = "/lib/nut/upsmon"; // /sbin/upsmon is a wrapper that honours nut.conf's MODE

bool writeScript(const QString &path, const QByteArray &body)
{
    return HostTest::writeFile(path, "#!/bin/sh\n" + body)
           && QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

QString shellQuoted(const QString &path)
{
    return QLatin1Char('\'') + path + QLatin1Char('\'');
}

} // namespace

class TestHostUpsmon : public QObject
{
    Q_OBJECT

private slots:
    void secondaryShutsDownOnLowBattery()
    {
        QString upsmon = QFile::exists(QLatin1String(kUpsmonPath)) ? QLatin1String(kUpsmonPath) : QString();
        if (upsmon.isEmpty())
            QSKIP("nut-client is not installed (tools/bootstrap.sh installs it)");

        QTemporaryDir work;
        QVERIFY(work.isValid());
        const QString notifyLog = work.filePath("notify.log");
        const QString shutdownLog = work.filePath("shutdown.log");
        QVERIFY(writeScript(work.filePath("notify.sh"),
                            QStringLiteral("echo \"$NOTIFYTYPE $*\" >> %1\n").arg(shellQuoted(notifyLog)).toUtf8()));
        QVERIFY(writeScript(work.filePath("shutdown.sh"),
                            QStringLiteral("echo shutdown >> %1\n").arg(shellQuoted(shutdownLog)).toUtf8()));

        UpsSimulator agent(UpsSimulator::Profile::Single);
        agent.setJitterEnabled(false);
        QVERIFY(agent.start(QStringLiteral("127.0.0.1"), 0));
        const QString device = QStringLiteral("ups1");
        const DeviceEntry entry = HostTest::writeDevice(device, agent.port(), 5);
        const auto cleanup = qScopeGuard([device] { removeDeviceConfig(device); });
        DeviceHost host(work.filePath("logs"));
        QCOMPARE(host.loadPlugins(builtBinaryDir()), 1);
        QCOMPARE(host.startDevices({entry}), 1);

        NutServer server(&host);
        const QString users = work.filePath("upsd.users");
        QVERIFY(HostTest::writeFile(users, "[monuser]\n    password = monpass\n    upsmon secondary\n"));
        server.loadUsers(users);
        server.setPollInterval(device, 1);
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        QTRY_VERIFY_WITH_TIMEOUT(host.session(device)->hasFullPicture(), kConnectMs);

        // upsmon reads its configuration and keeps its state in folders of its own.
        const QByteArray conf = QStringLiteral(
                                    "RUN_AS_USER root\n"
                                    "MONITOR %1@127.0.0.1:%2 1 monuser monpass secondary\n"
                                    "MINSUPPLIES 1\n"
                                    "SHUTDOWNCMD \"%3\"\n"
                                    "NOTIFYCMD \"%4\"\n"
                                    "NOTIFYFLAG ONBATT SYSLOG+EXEC\n"
                                    "NOTIFYFLAG LOWBATT SYSLOG+EXEC\n"
                                    "NOTIFYFLAG ONLINE SYSLOG+EXEC\n"
                                    "POLLFREQ 1\n"
                                    "POLLFREQALERT 1\n"
                                    "DEADTIME 5\n"
                                    "HOSTSYNC 1\n"
                                    "FINALDELAY 0\n"
                                    "POWERDOWNFLAG %5\n")
                                    .arg(device)
                                    .arg(server.serverPort())
                                    .arg(work.filePath("shutdown.sh"), work.filePath("notify.sh"),
                                         work.filePath("killpower"))
                                    .toUtf8();
        const QString confPath = work.filePath("upsmon.conf");
        QVERIFY(HostTest::writeFile(confPath, conf));
        QVERIFY(QFile::setPermissions(confPath, QFileDevice::ReadOwner | QFileDevice::WriteOwner));

        QProcess monitor;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("NUT_CONFPATH"), work.path());
        environment.insert(QStringLiteral("NUT_STATEPATH"), work.path());
        environment.insert(QStringLiteral("NUT_ALTPIDPATH"), work.path());
        environment.insert(QStringLiteral("NUT_PIDPATH"), work.path());
        monitor.setProcessEnvironment(environment);
        monitor.setProcessChannelMode(QProcess::MergedChannels);
        monitor.setStandardInputFile(QProcess::nullDevice());
        monitor.start(upsmon, {QStringLiteral("-D"), QStringLiteral("-p")});
        QVERIFY2(monitor.waitForStarted(kStopMs), qPrintable(monitor.errorString()));
        const auto stopMonitor = qScopeGuard([&monitor] {
            if (monitor.state() != QProcess::NotRunning) {
                monitor.terminate();
                if (!monitor.waitForFinished(kStopMs)) {
                    monitor.kill();
                    monitor.waitForFinished(kStopMs);
                }
            }
        });
        auto output = [&monitor] { return QString::fromLocal8Bit(monitor.readAll()); };
        QString seen;

        // Logged in and polling on mains: no notice yet.
        QTRY_VERIFY_WITH_TIMEOUT(server.clientCount() >= 1, kConnectMs);
        QVERIFY(!QFile::exists(notifyLog));

        agent.setTimeScale(kTimeScale);
        QVERIFY(agent.setScenario(QStringLiteral("mains-failure")));
        QElapsedTimer clock;
        clock.start();
        const bool onBattery = QTest::qWaitFor(
            [&] { return HostTest::fileLines(notifyLog).filter(QStringLiteral("ONBATT")).size() == 1; },
            kBatteryLowMs);
        seen += output();
        QVERIFY2(onBattery, qPrintable(seen));
        QVERIFY2(!QFile::exists(shutdownLog), "shut down while the battery was still good");

        const bool shutDown = QTest::qWaitFor([&] { return QFile::exists(shutdownLog); }, kBatteryLowMs);
        seen += output();
        QVERIFY2(shutDown, qPrintable(seen));
        QVERIFY(clock.elapsed() < 2 * kBatteryLowMs);
        QCOMPARE(HostTest::fileLines(shutdownLog), QStringList{QStringLiteral("shutdown")});
        // The status upsmon acted on, and what it told on the way.
        DeviceSession *session = host.session(device);
        const QStringList status = NutVariables::values(session->latestData(), session->activeAlarms(), false)
                                       .value("ups.status")
                                       .split(QLatin1Char(' '));
        QVERIFY2(status.contains("OB") && status.contains("LB"), qPrintable(status.join(' ')));
        const QStringList told = HostTest::fileLines(notifyLog);
        QVERIFY2(told.size() >= 2 && told.first().startsWith("ONBATT") && told.filter("LOWBATT").size() == 1,
                 qPrintable(told.join('|')));

        host.shutdown();
    }
};

QTEST_MAIN(TestHostUpsmon)
#include "tst_host_upsmon.moc"
