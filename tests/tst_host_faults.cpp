// The host under faults of its surroundings: logs that cannot be written,
// a damaged dev.ini, broken libraries in the plug-in folder, device names
// that clash, and what the client cannot report itself (retries = 1, an agent
// that stops answering). Each time the host keeps monitoring and tells the
// user once, by file and reason, on stderr, the console monitor and the window.
#include <QBuffer>
#include <QLabel>
#include <QProcess>
#include <QTreeWidget>
#include <QtTest>

#include "collectthread.h"
#include "consolemonitor.h"
#include "deviceconfig.h"
#include "devicehost.h"
#include "devicesession.h"
#include "hosttestsupport.h"
#include "logwriter.h"
#include "mainwindow.h"

namespace {

constexpr int kDeviceListLastDataColumn = 5;
constexpr int kHourMs = 3600 * 1000;
constexpr int kHostRunMs = 60000; // 1 s run + a stop within the host's 35 s bound
const char kDeviceIid[] = "com.wenk.Qt.ProInterface";
const char kOtherIid[] = "com.test.Qt.ProInterface"; // same length: the metadata stays valid

using DataMap = QMap<int, QVariant>;

// A client that does nothing on its own: the test emits its events.
class FakeClient : public CollectThread
{
    Q_OBJECT
public:
    int retriesOnLoad = 5;

    CollectThread *create(void *) override
    {
        auto *client = new FakeClient;
        client->retriesOnLoad = retriesOnLoad;
        return client;
    }
    void loadConfig() override { retries = retriesOnLoad; }
    QStringList getDataLogDesc() override { return {QStringLiteral("Input")}; }
    QStringList changeLogData(QMap<int, QVariant> data) override { return {data.value(9).toString()}; }

    void sendData(const DataMap &data)
    {
        emit postDEvent(2007, {{QStringLiteral("data"), QVariant::fromValue(data)}});
    }
};

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QStringList noticeTexts(const DeviceHost &host, const QString &part)
{
    QStringList texts;
    for (const HostNotice &notice : host.notices()) {
        if (notice.text.contains(part))
            texts << notice.device + QLatin1Char(':') + notice.text;
    }
    return texts;
}

} // namespace

class TestHostFaults : public QObject
{
    Q_OBJECT

private slots:
    void logWriteFailures_data();
    void logWriteFailures();
    void logFailureIsShownAndMonitoringGoesOn();
    void configProblems_data();
    void configProblems();
    void hostStartsPastBrokenFiles();
    void clashingDeviceNames();
    void retriesWarning_data();
    void retriesWarning();
    void dataAgeIsShown();
};

void TestHostFaults::logWriteFailures_data()
{
    QTest::addColumn<bool>("diskFull");
    QTest::addColumn<bool>("nextDay");
    QTest::addColumn<QString>("reason");
    // A folder below a regular file cannot be made, even by root; /dev/full
    // takes the open and fails the write with ENOSPC.
    QTest::newRow("folder under a file, retry after the interval") << false << false << "cannot be created";
    QTest::newRow("folder under a file, next day's file") << false << true << "cannot be created";
    QTest::newRow("disk full, retry after the interval") << true << false << "No space left on device";
    QTest::newRow("disk full, next day's file") << true << true << "No space left on device";
}

void TestHostFaults::logWriteFailures()
{
    QFETCH(bool, diskFull);
    QFETCH(bool, nextDay);
    QFETCH(QString, reason);
    QTemporaryDir dir;
    const QString blocker = dir.filePath(QStringLiteral("file"));
    LogWriter logs(diskFull ? dir.path() : blocker + QStringLiteral("/logs"));
    logs.setRetryInterval(kHourMs);
    const QDateTime day1(QDate(2024, 5, 6), QTime(12, 0));
    const QString path1 = logs.eventFilePath(day1.date());
    QVERIFY(diskFull ? QFile::link(QStringLiteral("/dev/full"), path1) : writeFile(blocker, "x"));
    QSignalSpy changes(&logs, &LogWriter::failureChanged);
    if (diskFull) // Qt's note on opening a character device for appending
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Cannot call seek on a sequential")));

    constexpr int kLines = 20;
    for (int i = 0; i < kLines; ++i)
        QVERIFY(!logs.writeEvent(day1.addSecs(i), QStringLiteral("ups1"), 1041, QStringLiteral("lost")));
    QCOMPARE(changes.count(), 1); // once, not once per line
    QCOMPARE(changes.at(0).at(0).toBool(), true);
    const QString message = changes.at(0).at(1).toString();
    QVERIFY2(message.contains(path1) && message.contains(reason), qPrintable(message));
    QCOMPARE(logs.failure(), message);

    // Fixed, but the file is not tried again before its time.
    QVERIFY(diskFull ? QFile::remove(path1) : QFile::remove(blocker));
    QVERIFY(!logs.writeEvent(day1.addSecs(kLines), QStringLiteral("ups1"), 1041, QStringLiteral("lost")));
    QVERIFY(!QFile::exists(path1));
    QCOMPARE(changes.count(), 1);

    // A new day's file is tried at once; otherwise the interval must pass.
    const QDateTime next = nextDay ? day1.addDays(1) : day1.addSecs(kLines + 1);
    if (!nextDay)
        logs.setRetryInterval(0);
    QVERIFY(logs.writeEvent(next, QStringLiteral("ups1"), 1040, QStringLiteral("restored")));
    QCOMPARE(changes.count(), 2);
    QCOMPARE(changes.at(1).at(0).toBool(), false);
    QVERIFY2(changes.at(1).at(1).toString().contains(QStringLiteral("%1 line(s)").arg(kLines + 1)),
             qPrintable(changes.at(1).at(1).toString()));
    QVERIFY(!logs.isFailing());
    QCOMPARE(HostTest::fileLines(logs.eventFilePath(next.date())).size(), 1);
}

void TestHostFaults::logFailureIsShownAndMonitoringGoesOn()
{
    QTemporaryDir dir;
    const QString blocker = dir.filePath(QStringLiteral("db"));
    QVERIFY(writeFile(blocker, "not a folder"));
    DeviceHost host(blocker + QStringLiteral("/logs"));
    host.notice(QString(), QStringLiteral("told before the window opened"));
    FakeClient factory;
    DeviceSession *session = host.addDevice(&factory, QStringLiteral("ups-a"));
    QVERIFY(session);
    auto *client = static_cast<FakeClient *>(session->client());
    QBuffer console;
    console.open(QIODevice::WriteOnly);
    ConsoleMonitor monitor(&host, &console);
    MainWindow window(&host);
    auto *pane = window.findChild<QTreeWidget *>(QStringLiteral("eventTable"));
    auto *problem = window.findChild<QLabel *>(QStringLiteral("problemLabel"));
    QVERIFY(pane && problem);
    QCOMPARE(pane->topLevelItem(0)->text(2), QStringLiteral("told before the window opened"));

    for (int volts = 220; volts < 230; ++volts)
        client->sendData({{9, volts}});
    QTRY_COMPARE(session->latestData().value(9).toInt(), 229); // data keeps reaching the device
    QVERIFY(session->isRunning());
    const QString failure = QStringLiteral("Cannot write the log");
    QCOMPARE(noticeTexts(host, failure).size(), 1);
    QCOMPARE(QString::fromUtf8(console.data()).count(QStringLiteral("warning: ") + failure), 1);
    QVERIFY(monitor.statusBlock().contains(QStringLiteral("! ") + failure));
    QCOMPARE(pane->topLevelItem(0)->text(1), QStringLiteral("Host"));
    QVERIFY(pane->topLevelItem(0)->text(2).startsWith(failure));
    QVERIFY(!problem->isHidden());
    QVERIFY(problem->text().contains(blocker));

    QVERIFY(QFile::remove(blocker));
    host.logs().setRetryInterval(0);
    client->sendData({{9, 231}});
    QTRY_VERIFY(!host.logs().isFailing());
    QVERIFY(QString::fromUtf8(console.data()).contains(QStringLiteral("are written again")));
    QVERIFY(problem->isHidden());
    QVERIFY(!monitor.statusBlock().contains(QStringLiteral("! ")));
    QCOMPARE(HostTest::fileLines(host.logs().dataFilePath(QStringLiteral("ups-a"), QDate::currentDate())).size(), 2);
}

void TestHostFaults::configProblems_data()
{
    QTest::addColumn<QByteArray>("content"); // empty: no file
    QTest::addColumn<bool>("folder");
    QTest::addColumn<QStringList>("expected"); // each in one of the problems
    QTest::addColumn<QStringList>("devices");  // still usable

    const QByteArray ups1 = "[ups1]\nipAddr=127.0.0.1\nport=502\n";
    QTest::newRow("missing") << QByteArray() << false << QStringList{"does not exist", "--add NAME HOST:PORT"}
                             << QStringList();
    QTest::newRow("a folder in its place") << QByteArray() << true << QStringList{"cannot be read: it is a folder"}
                                           << QStringList();
    QTest::newRow("lines it cannot understand")
        << ups1 + "this is junk\n[ups2\n; a comment\n" << false
        << QStringList{"2 line(s) cannot be understood", "line(s) 4, 5;", "\"this is junk\""} << QStringList{"ups1"};
    QTest::newRow("binary junk") << QByteArray("\x7f" "ELF\x02\x01\x00\xff[\x00]=\x01", 14) << false
                                 << QStringList{"1 line(s) cannot be understood", "no usable device", "--add"}
                                 << QStringList();
    QTest::newRow("the same group twice") << ups1 + "[ups2]\nipAddr=127.0.0.2\nport=502\n[ups1]\nport=503\n"
                                          << false << QStringList{"[ups1] is written 2 times (lines 1, 7)"}
                                          << QStringList{"ups1", "ups2"};
    QTest::newRow("no device, no port") << QByteArray("[notes]\ntext=x\n[ups1]\nipAddr=127.0.0.1\nport=99999\n")
                                        << false << QStringList{"[notes] is no device", "\"99999\" of [ups1]"}
                                        << QStringList{"ups1"};
    // QSettings would decode these with QDataStream and die on the sizes inside.
    QTest::newRow("encoded value") << ups1 + "interval=@Variant(\\0\\0\\0\\=12=\\0)\n" << false
                                   << QStringList{"line 4 holds a value with '@'", "not read"} << QStringList();
    QTest::newRow("escaped encoded value") << ups1 + "retries=\"\\x40Variant(\\0\\0\\0\\=12=\\0)\"\n" << false
                                           << QStringList{"line 4 holds a value"} << QStringList();
    QTest::newRow("sound") << ups1 + "; a comment\nretries=3\n" << false << QStringList() << QStringList{"ups1"};
}

void TestHostFaults::configProblems()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, folder);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, devices);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("dev.ini"));
    if (folder)
        QVERIFY(QDir().mkpath(path));
    else if (!content.isEmpty())
        QVERIFY(writeFile(path, content));
    const DeviceConfig config(path);

    const QStringList problems = config.problems();
    const QString all = problems.join(QLatin1Char('\n'));
    QCOMPARE(problems.isEmpty(), expected.isEmpty());
    for (const QString &problem : problems)
        QVERIFY2(problem.contains(path), qPrintable(problem)); // which file
    for (const QString &part : expected)
        QVERIFY2(all.contains(part), qPrintable(part + QStringLiteral(" not in:\n") + all));
    QStringList names;
    for (const DeviceEntry &entry : config.devices())
        names << entry.name;
    QCOMPARE(names, devices);
}

void TestHostFaults::hostStartsPastBrokenFiles()
{
    // A copy of the application folder: the host and the plug-in read
    // dev.ini and write logs below it.
    const QDir bin(builtBinaryDir());
    QVERIFY2(bin.exists(QStringLiteral("orvek-host")), "build the orvek-host target first");
    QTemporaryDir app;
    for (const char *file : {"orvek-host", "libOrvekClient.so", "libCollectContract.so"})
        QVERIFY(QFile::copy(bin.filePath(QLatin1String(file)), app.filePath(QLatin1String(file))));
    QFile plugin(bin.filePath(QStringLiteral("libOrvekClient.so")));
    QVERIFY(plugin.open(QIODevice::ReadOnly));
    const QByteArray good = plugin.readAll();
    QByteArray other = good;
    other.replace(kDeviceIid, kOtherIid);
    QVERIFY(other != good);
    QVERIFY(writeFile(app.filePath(QStringLiteral("libBroken.so")), QByteArray(4096, '\x5a')));
    QVERIFY(writeFile(app.filePath(QStringLiteral("libOrvekHalf.so")), good.left(good.size() / 2)));
    QVERIFY(writeFile(app.filePath(QStringLiteral("libOrvekOther.so")), other));
    const QString ini = app.filePath(QStringLiteral("KSVO/Quoranet/db/dev.ini"));
    QVERIFY(QDir().mkpath(QFileInfo(ini).absolutePath()));
    const QByteArray device = "[ups-f]\nipAddr=127.0.0.1\nport=" + QByteArray::number(closedLocalPort())
                              + "\nretries=1\n";
    QVERIFY(writeFile(ini, device + "garbage here\n"));

    QProcess host;
    host.setProgram(app.filePath(QStringLiteral("orvek-host")));
    host.setArguments({QStringLiteral("--headless"), QStringLiteral("--duration"), QStringLiteral("1")});
    host.setStandardInputFile(QProcess::nullDevice());
    host.start();
    if (!host.waitForFinished(kHostRunMs))
        host.kill();
    const QString out = QString::fromLocal8Bit(host.readAllStandardOutput());
    const QString err = QString::fromLocal8Bit(host.readAllStandardError());
    QCOMPARE(host.exitStatus(), QProcess::NormalExit);
    QVERIFY2(host.exitCode() == 0, qPrintable(err)); // the good plug-in was loaded
    QVERIFY2(out.contains(QStringLiteral("1 device(s)")), qPrintable(out)); // the usable device runs
    const QStringList told = {"libBroken.so is skipped: it is not a shared library",
                              "libOrvekHalf.so is skipped: it is damaged or truncated",
                              QStringLiteral("libOrvekOther.so is skipped: it is a Qt plug-in with the interface id \"%1\"")
                                  .arg(QLatin1String(kOtherIid)),
                              "dev.ini: 1 line(s) cannot be understood",
                              "warning: ups-f: retries = 1"};
    for (const QString &line : told)
        QVERIFY2(err.contains(line), qPrintable(line + QStringLiteral(" not in:\n") + err));
}

void TestHostFaults::clashingDeviceNames()
{
    QTemporaryDir dir;
    DeviceHost host(dir.path());
    FakeClient factory;
    const QStringList names = {"ups 1", "ups_1"}; // one file name for both
    QList<FakeClient *> clients;
    for (const QString &name : names) {
        DeviceSession *session = host.addDevice(&factory, name);
        QVERIFY(session);
        clients << static_cast<FakeClient *>(session->client());
    }
    QVERIFY(!host.addDevice(&factory, names.first()));
    QCOMPARE(host.sessions().size(), 2);
    QCOMPARE(noticeTexts(host, QStringLiteral("already running")),
             QStringList{"ups 1:not started a second time: a device of that name is already running"});
    const QStringList clash = noticeTexts(host, QStringLiteral("would share one file name"));
    QCOMPARE(clash.size(), 1);
    QVERIFY2(clash.first().startsWith(QStringLiteral("ups_1:")) && clash.first().contains(QStringLiteral("\"ups 1\"")),
             qPrintable(clash.first()));

    const QDate today = QDate::currentDate();
    QVERIFY(host.logs().dataFilePath(names.at(0), today) != host.logs().dataFilePath(names.at(1), today));
    for (int i = 0; i < clients.size(); ++i)
        clients.at(i)->sendData({{9, 200 + i}});
    for (int i = 0; i < names.size(); ++i) {
        const QString path = host.logs().dataFilePath(names.at(i), today);
        QTRY_COMPARE(HostTest::fileLines(path).size(), 2); // header and its own row only
        QCOMPARE(HostTest::csvFields(HostTest::fileLines(path).at(1)).value(1), QString::number(200 + i));
    }
}

void TestHostFaults::retriesWarning_data()
{
    QTest::addColumn<int>("retries");
    QTest::addColumn<bool>("warned");
    QTest::newRow("0") << 0 << true;
    QTest::newRow("1") << 1 << true;
    QTest::newRow("2") << 2 << false;
    QTest::newRow("default 5") << 5 << false;
}

void TestHostFaults::retriesWarning()
{
    QFETCH(int, retries);
    QFETCH(bool, warned);
    QTemporaryDir dir;
    DeviceHost host(dir.path());
    FakeClient factory;
    factory.retriesOnLoad = retries;
    QVERIFY(host.addDevice(&factory, QStringLiteral("ups-r")));
    const QStringList notices = noticeTexts(host, QStringLiteral("reported lost"));
    QCOMPARE(notices.size(), warned ? 1 : 0);
    if (warned)
        QVERIFY(notices.first().startsWith(QStringLiteral("ups-r:retries = %1").arg(retries)));
}

void TestHostFaults::dataAgeIsShown()
{
    QTemporaryDir dir;
    DeviceHost host(dir.path());
    FakeClient factory;
    DeviceSession *session = host.addDevice(&factory, QStringLiteral("ups-age"));
    QVERIFY(session);
    MainWindow window(&host);
    auto *list = window.findChild<QTreeWidget *>(QStringLiteral("deviceTree"));
    QVERIFY(list);
    QCOMPARE(list->topLevelItem(0)->text(kDeviceListLastDataColumn), QStringLiteral("none yet"));

    // Events without data points (a state record, an alarm-only answer) do not count.
    QSignalSpy events(session, &DeviceSession::eventReceived);
    emit session->client()->postDEvent(2001, {{QStringLiteral("state"), 0}});
    emit session->client()->postDEvent(2007, {{QStringLiteral("dis_alarm"), 0}});
    QTRY_COMPARE(events.count(), 2);
    QVERIFY(!session->lastDataTime().isValid());
    static_cast<FakeClient *>(session->client())->sendData({{9, 230}});
    QTRY_VERIFY(session->lastDataTime().isValid());
    const QDateTime last = session->lastDataTime();
    QVERIFY(qAbs(last.secsTo(QDateTime::currentDateTime())) < 60);
    window.refreshDevices();
    QVERIFY2(QRegularExpression(QStringLiteral("^\\d+ s ago$"))
                 .match(list->topLevelItem(0)->text(kDeviceListLastDataColumn))
                 .hasMatch(),
             qPrintable(list->topLevelItem(0)->text(kDeviceListLastDataColumn)));

    // An agent that holds the connection but stops answering: the age grows.
    const QList<QPair<int, QString>> ages = {{75, "data 1 min 15 s ago"}, {3725, "data 1 h 2 min ago"}};
    for (const auto &age : ages) {
        const QString line = ConsoleMonitor::deviceLine(session, last.addSecs(age.first));
        QVERIFY2(line.contains(age.second), qPrintable(line));
    }
}

QTEST_MAIN(TestHostFaults)
#include "tst_host_faults.moc"
