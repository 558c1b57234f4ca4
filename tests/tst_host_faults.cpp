// The host under faults of its surroundings: logs that cannot be written, a damaged dev.ini, broken libraries in
// the plug-in folder, retries = 1. Each time the host keeps monitoring and tells the user once, by file and reason,
// on stderr, the console monitor and the window. And a stop while clients are stuck in their blocking connection
// steps ends within the host's bound.
#include <QBuffer>
#include <QLabel>
#include <QProcess>
#include <QTcpServer>
#include <QTreeWidget>
#include <QtTest>

#include <sys/resource.h>
#include <sys/socket.h>

#include "consolemonitor.h"
#include "hosttestsupport.h"
#include "mainwindow.h"
#include "pluginhost.h"

using namespace HostTest;

class TestHostFaults : public QObject
{
    Q_OBJECT

private slots:
    void logWriteFailures_data()
    {
        QTest::addColumn<bool>("diskFull"); // else a folder below a regular file, which even root cannot make
        QTest::addColumn<bool>("nextDay");  // else a retry once the interval has passed
        for (bool diskFull : {false, true}) {
            for (bool nextDay : {false, true})
                QTest::addRow("%s, %s", diskFull ? "disk full" : "no folder", nextDay ? "next day" : "retry")
                    << diskFull << nextDay;
        }
    }

    void logWriteFailures()
    {
        QFETCH(bool, diskFull);
        QFETCH(bool, nextDay);
        const QString reason = diskFull ? "No space left on device" : "cannot be created"; // /dev/full: ENOSPC
        QTemporaryDir dir;
        const QString blocker = dir.filePath(QStringLiteral("file"));
        LogWriter logs(diskFull ? dir.path() : blocker + QStringLiteral("/logs"));
        logs.setRetryInterval(3600 * 1000);
        const QDateTime day1(QDate(2024, 5, 6), QTime(12, 0));
        const QString path1 = logs.eventFilePath(day1.date());
        QVERIFY(diskFull ? QFile::link(QStringLiteral("/dev/full"), path1) : writeFile(blocker, "x"));
        QSignalSpy changes(&logs, &LogWriter::failureChanged);
        if (diskFull) // Qt's note on opening a character device for appending
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot call seek on a sequential")));
        auto write = [&logs](const QDateTime &t) { return logs.writeEvent(t, QStringLiteral("ups1"), 1041, "lost"); };

        for (int i = 0; i < 20; ++i)
            QVERIFY(!write(day1.addSecs(i)));
        QCOMPARE(changes.count(), 1); // once, not once per line
        const QString message = changes.at(0).at(1).toString();
        QVERIFY2(changes.at(0).at(0).toBool() && message.contains(path1) && message.contains(reason),
                 qPrintable(message));
        QCOMPARE(logs.failure(), message);

        // Fixed, but the file is not tried again before its time.
        QVERIFY(diskFull ? QFile::remove(path1) : QFile::remove(blocker));
        QVERIFY(!write(day1.addSecs(20)));
        QVERIFY(!QFile::exists(path1));
        // A new day's file is tried at once; otherwise the interval must pass.
        if (!nextDay)
            logs.setRetryInterval(0);
        const QDateTime next = nextDay ? day1.addDays(1) : day1.addSecs(21);
        QVERIFY(write(next));
        QCOMPARE(changes.count(), 2);
        QVERIFY(!changes.at(1).at(0).toBool() && !logs.isFailing());
        QVERIFY(changes.at(1).at(1).toString().contains(QStringLiteral("21 line(s)"))); // how many were lost
        QCOMPARE(fileLines(logs.eventFilePath(next.date())).size(), 1);
    }

    void logFileReplacedUnderOpenWriter_data()
    {
        QTest::addColumn<QString>("change"); // done to the data log between two rows
        for (const char *change : {"deleted", "rotated", "emptied", "folder deleted"})
            QTest::newRow(change) << QString::fromLatin1(change);
    }

    void logFileReplacedUnderOpenWriter()
    {
        QFETCH(QString, change);
        QTemporaryDir dir;
        LogWriter logs(dir.filePath(QStringLiteral("logs")));
        const QDateTime t(QDate(2024, 5, 6), QTime(12, 0));
        auto row = [&logs, t](int s) { return logs.writeDataRow(t.addSecs(s), "ups1", {"V"}, {QString::number(s)}); };
        const QString path = logs.dataFilePath(QStringLiteral("ups1"), t.date());
        const QString rotated = dir.filePath(QStringLiteral("rotated.csv"));
        QVERIFY(row(0) && row(1));
        if (change == "deleted")
            QVERIFY(QFile::remove(path));
        else if (change == "folder deleted")
            QVERIFY(QDir(logs.folder()).removeRecursively());
        else // rotated: renamed and an empty file made in its place
            QVERIFY((change == "emptied" || QFile::rename(path, rotated)) && writeFile(path, {}));
        // The next row goes to the file now at the path, header first; a rotated file keeps its rows.
        QVERIFY(row(2));
        QCOMPARE(fileLines(path), (QStringList{"time,V", "2024-05-06 12:00:02,2"}));
        QCOMPARE(fileLines(rotated).size(), change == "rotated" ? 3 : 0);
    }

    void logFilesOpenAtOnce_data()
    {
        QTest::addColumn<int>("bound");      // 0: from the open-file limit, lowered to 256 here
        QTest::addColumn<int>("expected");   // files open after a row for each device
        QTest::newRow("set") << 2 << 2;
        QTest::newRow("a quarter of the limit") << 0 << 64;
    }

    void logFilesOpenAtOnce()
    {
        QFETCH(int, bound);
        QFETCH(int, expected);
        rlimit saved{};
        QVERIFY(getrlimit(RLIMIT_NOFILE, &saved) == 0);
        rlimit lowered = saved;
        lowered.rlim_cur = std::min<rlim_t>(256, saved.rlim_cur);
        if (bound == 0 && (lowered.rlim_cur != 256 || setrlimit(RLIMIT_NOFILE, &lowered) != 0))
            QSKIP("cannot set the open-file limit to 256");
        QTemporaryDir dir;
        LogWriter logs(dir.path());
        logs.setMaxOpenFiles(bound);
        const QDateTime day1(QDate(2024, 5, 6), QTime(23, 59, 58));
        const int devices = expected + 3;
        for (int s = 0; s < 2; ++s) { // the second round reopens files closed to make room
            for (int d = 0; d < devices; ++d)
                QVERIFY(logs.writeDataRow(day1.addSecs(s), QString::number(d), {"V"}, {QString::number(s)}));
        }
        setrlimit(RLIMIT_NOFILE, &saved);
        QCOMPARE(logs.openFileCount(), expected);
        QCOMPARE(fileLines(logs.dataFilePath(QStringLiteral("0"), day1.date())),
                 (QStringList{"time,V", "2024-05-06 23:59:58,0", "2024-05-06 23:59:59,1"})); // header once
        // The first line of a day goes to that day's file and closes the earlier day's.
        const QDateTime day2 = day1.addSecs(2);
        QVERIFY(logs.writeEvent(day2, QStringLiteral("ups1"), 1041, "lost"));
        QCOMPARE(logs.openFileCount(), 1);
        QCOMPARE(fileLines(logs.eventFilePath(day2.date())).size(), 1);
    }

    void logFailureIsShownAndMonitoringGoesOn()
    {
        ScriptedHost h(QStringLiteral("db/logs"));
        const QString blocker = h.dir.filePath(QStringLiteral("db"));
        QVERIFY(writeFile(blocker, "not a folder"));
        DeviceHost &host = h.host;
        host.notice(QString(), QStringLiteral("told before the window opened"));
        ScriptedClient *client = h.start(QStringLiteral("ups-a"));
        QVERIFY(client);
        QBuffer console;
        console.open(QIODevice::WriteOnly);
        ConsoleMonitor monitor(&host, &console);
        MainWindow window(&host);
        auto *pane = window.findChild<QTreeWidget *>(QStringLiteral("eventTable"));
        auto *problem = window.findChild<QLabel *>(QStringLiteral("problemLabel"));
        QCOMPARE(pane->topLevelItem(0)->text(2), QStringLiteral("told before the window opened"));
        auto *lastData = window.findChild<QTreeWidget *>(QStringLiteral("deviceTree"))->topLevelItem(0);
        QCOMPARE(lastData->text(5), QStringLiteral("none yet"));

        for (int volts = 220; volts < 230; ++volts)
            client->sendData({{9, volts}});
        // Data keeps reaching the device.
        QTRY_COMPARE(host.session(QStringLiteral("ups-a"))->latestData().value(9).toInt(), 229);
        QVERIFY(QRegularExpression(QStringLiteral("^\\d+ s ago$")).match(lastData->text(5)).hasMatch());
        const QString failure = QStringLiteral("Cannot write the log");
        QCOMPARE(noticeTexts(host, failure).size(), 1);
        QCOMPARE(QString::fromUtf8(console.data()).count(QStringLiteral("warning: ") + failure), 1);
        QVERIFY(monitor.statusBlock().contains(QStringLiteral("! ") + failure));
        QCOMPARE(pane->topLevelItem(0)->text(1), QStringLiteral("Host"));
        QVERIFY(pane->topLevelItem(0)->text(2).startsWith(failure));
        QVERIFY(!problem->isHidden() && problem->text().contains(blocker));

        QVERIFY(QFile::remove(blocker));
        host.logs().setRetryInterval(0);
        client->sendData({{9, 231}});
        QTRY_VERIFY(!host.logs().isFailing());
        QVERIFY(QString::fromUtf8(console.data()).contains(QStringLiteral("are written again")));
        QVERIFY(problem->isHidden() && !monitor.statusBlock().contains(QStringLiteral("! ")));
        QCOMPARE(fileLines(host.logs().dataFilePath("ups-a", QDate::currentDate())).size(), 2);
    }

    void configProblems_data()
    {
        QTest::addColumn<QByteArray>("content"); // empty: no file; "/": a folder in its place
        QTest::addColumn<QStringList>("expected"); // each in one of the problems
        QTest::addColumn<QString>("devices");      // still usable
        const QByteArray ups1 = "[ups1]\nipAddr=127.0.0.1\nport=502\n";
        QTest::newRow("missing") << QByteArray() << QStringList{"does not exist", "--add NAME HOST:PORT"} << "";
        QTest::newRow("a folder") << QByteArray("/") << QStringList{"cannot be read: it is a folder"} << "";
        QTest::newRow("lines it cannot understand")
            << ups1 + "this is junk\n[ups2\n; a comment\n"
            << QStringList{"2 line(s) cannot be understood", "line(s) 4, 5;", "\"this is junk\""} << "ups1";
        QTest::newRow("binary junk") << QByteArray("\x7f" "ELF\x02\x01\x00\xff[\x00]=\x01", 14)
            << QStringList{"1 line(s) cannot be understood", "no usable device", "--add"} << "";
        QTest::newRow("the same group twice") << ups1 + "[ups2]\nipAddr=127.0.0.2\nport=502\n[ups1]\nport=503\n"
                                              << QStringList{"[ups1] is written 2 times (lines 1, 7)"} << "ups1,ups2";
        QTest::newRow("no device, no port") << QByteArray("[notes]\ntext=x\n[ups1]\nipAddr=127.0.0.1\nport=99999\n")
                                            << QStringList{"[notes] is no device", "\"99999\" of [ups1]"} << "ups1";
        // QSettings would decode these with QDataStream and die on the sizes inside.
        QTest::newRow("encoded value") << ups1 + "interval=@Variant(\\0\\0\\0\\=12=\\0)\n"
                                       << QStringList{"line 4 holds a value with '@'", "not read"} << "";
        QTest::newRow("escaped encoded value") << ups1 + "retries=\"\\x40Variant(\\0\\0\\0\\=12=\\0)\"\n"
                                               << QStringList{"line 4 holds a value"} << "";
        QTest::newRow("sound") << ups1 + "; a comment\nretries=3\n" << QStringList() << "ups1";
    }

    void configProblems()
    {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, expected);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("dev.ini"));
        QVERIFY(content.isEmpty() || (content == "/" ? QDir().mkpath(path) : writeFile(path, content)));
        const DeviceConfig config(path);
        const QString all = config.problems().join(QLatin1Char('\n'));
        QCOMPARE(config.problems().isEmpty(), expected.isEmpty());
        for (const QString &problem : config.problems())
            QVERIFY2(problem.contains(path), qPrintable(problem)); // which file
        for (const QString &part : expected)
            QVERIFY2(all.contains(part), qPrintable(part + QStringLiteral(" not in:\n") + all));
        QStringList names;
        for (const DeviceEntry &entry : config.devices())
            names << entry.name;
        QTEST(names.join(QLatin1Char(',')), "devices");
    }

    void hostStartsPastBrokenFiles()
    {
        // A copy of the application folder: the host and the plug-in read dev.ini and write logs below it.
        const QDir bin(builtBinaryDir());
        QTemporaryDir app;
        for (const char *file : {"orvek-host", "libOrvekClient.so", "libCollectContract.so"})
            QVERIFY(QFile::copy(bin.filePath(QLatin1String(file)), app.filePath(QLatin1String(file))));
        QFile plugin(bin.filePath(QStringLiteral("libOrvekClient.so")));
        QVERIFY(plugin.open(QIODevice::ReadOnly));
        const QByteArray good = plugin.readAll();
        const char otherIid[] = "com.test.Qt.ProInterface"; // as long as the real one: the metadata stays valid
        QVERIFY(writeFile(app.filePath(QStringLiteral("libBroken.so")), QByteArray(4096, '\x5a')));
        QVERIFY(writeFile(app.filePath(QStringLiteral("libOrvekHalf.so")), good.left(good.size() / 2)));
        QVERIFY(writeFile(app.filePath(QStringLiteral("libOrvekOther.so")),
                          QByteArray(good).replace(PluginHost::kInterfaceId, otherIid)));
        const QString ini = app.filePath(QStringLiteral("KSVO/Quoranet/db/dev.ini"));
        QVERIFY(QDir().mkpath(QFileInfo(ini).absolutePath()));
        QVERIFY(writeFile(ini, "[ups-f]\nipAddr=127.0.0.1\nport=" + QByteArray::number(closedLocalPort())
                                   + "\nretries=1\ngarbage here\n"));

        QProcess host;
        host.setStandardInputFile(QProcess::nullDevice());
        host.start(app.filePath(QStringLiteral("orvek-host")), {"--headless", "--duration", "1"});
        if (!host.waitForFinished((DeviceHost::StopBoundSeconds + 25) * 1000))
            host.kill();
        const QString err = QString::fromLocal8Bit(host.readAllStandardError());
        const QString out = QString::fromLocal8Bit(host.readAllStandardOutput());
        QCOMPARE(host.exitStatus(), QProcess::NormalExit);
        QVERIFY2(host.exitCode() == 0, qPrintable(err)); // the good plug-in was loaded
        QVERIFY(out.contains(QStringLiteral("1 device(s)")));
        const QStringList told = {"libBroken.so is skipped: it is not a shared library",
                                  "libOrvekHalf.so is skipped: it is damaged or truncated",
                                  QStringLiteral("libOrvekOther.so is skipped: it is a Qt plug-in with the "
                                                 "interface id \"%1\"").arg(QLatin1String(otherIid)),
                                  "dev.ini: 1 line(s) cannot be understood"};
        for (const QString &line : told)
            QVERIFY2(err.contains(line), qPrintable(line + QStringLiteral(" not in:\n") + err));
        // Devices start once the console monitor runs: it tells theirs.
        QVERIFY2(out.contains(QRegularExpression(QStringLiteral("ups-f.*retries = 1"))), qPrintable(out));
    }

    void stopWhileClientsAreBlocked()
    {
        // One client sleeps in the pause before reconnecting, one waits for a
        // handshake that never completes.
        const QString pausing = QStringLiteral("host-stop-pause"), blocked = QStringLiteral("host-stop-connect");
        constexpr int pauseMs = 5000, marginMs = 1500;
        // A listener that never accepts, its backlog cut to 0 and filled by one
        // connection: further handshakes go unanswered until the caller gives up.
        QTcpServer listener;
        QVERIFY(listener.listen(QHostAddress::LocalHost));
        listener.pauseAccepting();
        QVERIFY(::listen(int(listener.socketDescriptor()), 0) == 0);
        QTcpSocket filler, probe;
        filler.connectToHost(QHostAddress::LocalHost, listener.serverPort());
        filler.waitForConnected(1000);
        probe.connectToHost(QHostAddress::LocalHost, listener.serverPort());
        if (probe.waitForConnected(500))
            QSKIP("the local listener completes handshakes; cannot make a connection attempt hang");
        const QList<DeviceEntry> devices{writeDevice(pausing, closedLocalPort(), 5),
                                         writeDevice(blocked, listener.serverPort(), 5)};
        QTemporaryDir logs;
        DeviceHost host(logs.path());
        QCOMPARE(host.loadPlugins(builtBinaryDir()), 1);
        QCOMPARE(host.startDevices(devices), 2);
        QTest::qWait(1000 + pauseMs + 1000); // a tick and the pause: the blocked client is then in its wait
        QVERIFY(host.session(pausing)->isRunning() && host.session(blocked)->isRunning());

        QElapsedTimer timer;
        timer.start();
        qint64 pausingStoppedAt = -1;
        host.shutdown([&](const QStringList &stillRunning) {
            if (!stillRunning.contains(pausing) && pausingStoppedAt < 0)
                pausingStoppedAt = timer.elapsed();
        });
        const qint64 total = timer.elapsed();
        QVERIFY(host.sessions().isEmpty()); // stopped, then deleted
        QVERIFY2(total <= DeviceHost::StopBoundSeconds * 1000 + marginMs, qPrintable(QString::number(total)));
        // The clients stop independently: the pausing one is not held up.
        QVERIFY2(pausingStoppedAt >= 0 && pausingStoppedAt <= pauseMs + marginMs,
                 qPrintable(QString::number(pausingStoppedAt)));
        QVERIFY2(total > 2 * pauseMs, qPrintable(QString::number(total))); // the blocked one really was in its wait
    }
};

QTEST_MAIN(TestHostFaults)
#include "tst_host_faults.moc"
