// How the host drives a device plug-in, checked against a scripted client: the
// order of the factory calls, routing of view requests to control(), decoded
// data to the view and the data log, which events reach the event log, and
// the console monitor's device line.
#include <QtTest>

#include "collectthread.h"
#include "collectview.h"
#include "consolemonitor.h"
#include "devicehost.h"
#include "devicesession.h"
#include "hosttestsupport.h"

namespace {

using DataMap = QMap<int, QVariant>;
using EventMapT = QMap<QString, QVariant>;

QStringList g_journal; // factory and client calls, in order

// Records what the host hands to a view.
class FakeView : public CollectView
{
    Q_OBJECT
public:
    QStringList calls;

    void flushData(QMap<int, QVariant> d) override
    {
        CollectView::flushData(d);
        calls << QStringLiteral("flushData");
    }
    void refreshData() override { calls << QStringLiteral("refreshData"); }
};

// A device client that does nothing on its own: the test makes it emit.
class FakeClient : public CollectThread
{
    Q_OBJECT
public:
    bool makesClients = true;
    bool makesView = true;
    FakeView *view = nullptr;
    QList<QPair<int, QString>> controls;
    QList<Qt::HANDLE> controlThreads;

    ~FakeClient() override { delete view; }

    CollectThread *create(void *) override
    {
        g_journal << QStringLiteral("create");
        if (!makesClients)
            return nullptr;
        auto *client = new FakeClient;
        client->makesView = makesView;
        return client;
    }
    void loadConfig() override { g_journal << QStringLiteral("loadConfig:") + name; }
    CollectView *getView() override
    {
        g_journal << QStringLiteral("getView");
        if (!makesView)
            return nullptr;
        if (!view) {
            view = new FakeView;
            connect(view, SIGNAL(postDEvent(int,QMap<QString,QVariant>)), this,
                    SIGNAL(postDEvent(int,QMap<QString,QVariant>)));
        }
        return view;
    }
    int control(int id, QString value) override
    {
        controls << qMakePair(id, value);
        controlThreads << QThread::currentThreadId();
        return 1;
    }
    QStringList getEventLogDesc() override
    {
        // Two alarms: raised texts first, cleared texts in the second half.
        return {QStringLiteral("Fan fault"), QString(), QStringLiteral("Fan normal"), QString()};
    }
    QStringList getDataLogDesc() override { return {QStringLiteral("Input"), QStringLiteral("Mode")}; }
    QStringList changeLogData(QMap<int, QVariant> data) override
    {
        QStringList row;
        for (int column = 0; column < 15; ++column)
            row << QString();
        row[0] = data.value(9).toString();
        row[1] = QStringLiteral("a,b");
        row[9] = QStringLiteral("Utility supply");
        return row;
    }

    bool ready() const { return m_inThread.loadAcquire() != nullptr; }
    // Emits from the client's own thread, as a polling client does.
    void emitFromThread(int type, const EventMapT &map)
    {
        QMetaObject::invokeMethod(
            m_inThread.loadAcquire(), [this, type, map] { emit postDEvent(type, map); }, Qt::QueuedConnection);
    }

protected:
    void run() override
    {
        QObject anchor;
        m_inThread.storeRelease(&anchor);
        exec();
        m_inThread.storeRelease(nullptr);
    }

private:
    QAtomicPointer<QObject> m_inThread;
};

EventMapT alarmEvent(int id, int state)
{
    return EventMapT{{QStringLiteral("alarmId"), id}, {QStringLiteral("alarmState"), state}};
}

} // namespace

class TestHostRouting : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void hostOrderOfCalls();
    void viewRequestsReachControl_data();
    void viewRequestsReachControl();
    void requestsWithoutView();
    void decodedDataGoesToViewAndLog_data();
    void decodedDataGoesToViewAndLog();
    void eventLogLines();
    void factoryProblems();
    void consoleDeviceLine_data();
    void consoleDeviceLine();

private:
    FakeClient *start(const QString &name);

    std::unique_ptr<QTemporaryDir> m_logs;
    std::unique_ptr<DeviceHost> m_host;
    FakeClient m_factory;
};

void TestHostRouting::init()
{
    g_journal.clear();
    m_factory.makesClients = true;
    m_factory.makesView = true;
    m_logs.reset(new QTemporaryDir);
    m_host.reset(new DeviceHost(m_logs->path()));
}

void TestHostRouting::cleanup()
{
    m_host.reset();
}

FakeClient *TestHostRouting::start(const QString &name)
{
    DeviceSession *session = m_host->addDevice(&m_factory, name);
    if (!session)
        return nullptr;
    auto *client = static_cast<FakeClient *>(session->client());
    if (!QTest::qWaitFor([client] { return client->ready(); }, 5000))
        return nullptr;
    return client;
}

void TestHostRouting::hostOrderOfCalls()
{
    FakeClient *client = start(QStringLiteral("dev-a"));
    QVERIFY(client);
    QCOMPARE(g_journal, (QStringList{"create", "loadConfig:dev-a", "getView"}));
    QVERIFY(client->isRunning());
    QCOMPARE(client->name, QStringLiteral("dev-a"));
    DeviceSession *session = m_host->session(QStringLiteral("dev-a"));
    QCOMPARE(session->view(), client->view);
    QCOMPARE(m_host->deviceNames(), QStringList{"dev-a"});
}

void TestHostRouting::viewRequestsReachControl_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("routed");
    QTest::newRow("self-test") << 1003 << "" << true;
    QTest::newRow("buzzer off") << 1014 << "0" << true;
    QTest::newRow("below the range") << 1002 << "1" << false;
    QTest::newRow("above the range") << 1015 << "1" << false;
}

void TestHostRouting::viewRequestsReachControl()
{
    QFETCH(int, id);
    QFETCH(QString, value);
    QFETCH(bool, routed);
    FakeClient *client = start(QStringLiteral("dev-a"));
    QVERIFY(client);
    QSignalSpy events(m_host->session(QStringLiteral("dev-a")), &DeviceSession::eventReceived);

    client->view->control(id, value); // what the view's widgets do
    QVERIFY(client->controls.isEmpty()); // queued, not a direct call
    QTRY_COMPARE(events.count(), 1);
    if (routed) {
        QCOMPARE(client->controls, (QList<QPair<int, QString>>{{id, value}}));
        QCOMPARE(client->controlThreads.first(), QThread::currentThreadId()); // the host's thread
    } else {
        QVERIFY(client->controls.isEmpty());
    }
}

void TestHostRouting::requestsWithoutView()
{
    m_factory.makesView = false;
    FakeClient *client = start(QStringLiteral("dev-a"));
    QVERIFY(client);
    DeviceSession *session = m_host->session(QStringLiteral("dev-a"));
    QVERIFY(!session->view());
    session->requestControl(1013, QString());
    QCOMPARE(client->controls, (QList<QPair<int, QString>>{{1013, QString()}}));
    // Data without a view to show it still gets logged.
    client->emitFromThread(2007, EventMapT{{"data", QVariant::fromValue(DataMap{{9, 230}})}});
    QTRY_COMPARE(session->latestData().value(9).toInt(), 230);
}

void TestHostRouting::decodedDataGoesToViewAndLog_data()
{
    QTest::addColumn<QVariant>("data");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("data points") << QVariant::fromValue(DataMap{{9, 230}, {2000, 1}}) << true;
    QTest::newRow("text") << QVariant(QStringLiteral("junk")) << false;
    QTest::newRow("invalid") << QVariant() << false;
}

void TestHostRouting::decodedDataGoesToViewAndLog()
{
    QFETCH(QVariant, data);
    QFETCH(bool, accepted);
    FakeClient *client = start(QStringLiteral("dev/a"));
    QVERIFY(client);
    DeviceSession *session = m_host->session(QStringLiteral("dev/a"));
    QSignalSpy events(session, &DeviceSession::eventReceived);

    // An answer without data points (alarms, identity) first: nothing to show.
    client->emitFromThread(2007, EventMapT{{"dis_alarm", 0}});
    client->emitFromThread(2007, EventMapT{{"data", data}, {"raw_data", QByteArray(146, '\0')}});
    QTRY_COMPARE(events.count(), 2);

    const QString csv = m_host->logs().dataFilePath(QStringLiteral("dev/a"), QDate::currentDate());
    if (!accepted) {
        QVERIFY(client->view->calls.isEmpty());
        QVERIFY(session->latestData().isEmpty());
        QVERIFY(!QFile::exists(csv));
        return;
    }
    QCOMPARE(client->view->calls, (QStringList{"flushData", "refreshData"}));
    QCOMPARE(client->view->dataMap, data.value<DataMap>());
    QCOMPARE(session->latestData(), data.value<DataMap>());
    QVERIFY(session->status().alarmActive);
    // One header and one row for the one answer with data points; every
    // column the plug-in formats is written, commas quoted.
    const QStringList lines = HostTest::fileLines(csv);
    QCOMPARE(lines.size(), 2);
    const QStringList row = HostTest::csvFields(lines.at(1));
    QCOMPARE(row.size(), 16);
    QCOMPARE(row.mid(1, 2), (QStringList{"230", "a,b"}));
}

void TestHostRouting::eventLogLines()
{
    FakeClient *client = start(QStringLiteral("dev-a"));
    QVERIFY(client);
    QSignalSpy logged(m_host.get(), &DeviceHost::eventLogged);
    const QList<QPair<int, EventMapT>> sent = {
        {1040, EventMapT{{"desc", "dev-a"}, {"state", 0}}},
        {2001, EventMapT{{"desc", "dev-a"}, {"state", 0}}},
        {2006, alarmEvent(0, 1)},
        {2009, alarmEvent(0, 1)}, // follows its 2006: logged once
        {2001, EventMapT{{"dis_alarm", 1}, {"state", 0}}},
        {2007, EventMapT{{"dis_alarm", 1}}},
        {2010, alarmEvent(1, 1)}, // on its own: logged
        {2006, alarmEvent(2, 0)},
        {2010, alarmEvent(2, 0)}, // follows its 2006: logged once
        {1042, EventMapT{{"desc", "dev-a excute Selftest successful"}, {"result", 1}}},
        {1041, EventMapT{{"desc", "dev-a"}, {"lost", 1}, {"state", 1}}},
    };
    for (const auto &event : sent)
        client->emitFromThread(event.first, event.second);
    QTRY_COMPARE(logged.count(), 6);

    const QList<QStringList> lines =
        HostTest::eventLines(m_host->logs().eventFilePath(QDate::currentDate()), QStringLiteral("dev-a"));
    QStringList got;
    for (const QStringList &fields : lines)
        got << fields.value(2) + QLatin1Char(' ') + fields.value(3);
    QCOMPARE(got, (QStringList{"1040 Communication restored", "2006 Fan fault", "2010 Alarm 1 raised",
                               "2006 Fan normal", "1042 dev-a excute Selftest successful",
                               "1041 Communication lost"}));
    QCOMPARE(logged.at(1).mid(1), (QVariantList{"dev-a", 2006, "Fan fault"}));
}

void TestHostRouting::factoryProblems()
{
    QVERIFY(start(QStringLiteral("dev-a")));
    QVERIFY(!m_host->addDevice(&m_factory, QStringLiteral("dev-a"))); // the name is taken
    m_factory.makesClients = false;
    QVERIFY(!m_host->addDevice(&m_factory, QStringLiteral("dev-b")));
    QVERIFY(!m_host->addDevice(nullptr, QStringLiteral("dev-c")));
    QCOMPARE(m_host->deviceNames(), QStringList{"dev-a"});
}

void TestHostRouting::consoleDeviceLine_data()
{
    QTest::addColumn<QVariantMap>("points"); // id as text -> value
    QTest::addColumn<QString>("line");
    QTest::newRow("three phase, alarm") << QVariantMap{{"3", 80}, {"8", 3}, {"9", 230}, {"10", 231}, {"11", 229},
                                                       {"26", 3}, {"27", 220}, {"28", 221}, {"29", 222},
                                                       {"39", 30}, {"40", 31}, {"41", 32}, {"2000", 1},
                                                       {"2001", 1}}
                                        << "dev-a  connecting  -  Utility supply  in 230/231/229 V  "
                                           "out 220/221/222 V  load 30/31/32 %  battery 80 %  "
                                           "alarms: Fan fault; Alarm 1";
    QTest::newRow("values of wrong types") << QVariantMap{{"3", QStringList{"x"}}, {"8", "three"}, {"9", QVariant()},
                                                          {"2000", "on"}}
                                           << "dev-a  connecting  -  Utility supply  in - V  out - V  load - %  "
                                              "battery - %  alarms: none";
}

void TestHostRouting::consoleDeviceLine()
{
    QFETCH(QVariantMap, points);
    QFETCH(QString, line);
    FakeClient *client = start(QStringLiteral("dev-a"));
    QVERIFY(client);
    DeviceSession *session = m_host->session(QStringLiteral("dev-a"));
    QCOMPARE(ConsoleMonitor::deviceLine(session), QStringLiteral("dev-a  connecting  -  no data yet"));

    DataMap data;
    for (auto it = points.constBegin(); it != points.constEnd(); ++it)
        data.insert(it.key().toInt(), it.value());
    client->emitFromThread(2007, EventMapT{{"data", QVariant::fromValue(data)}});
    QTRY_VERIFY(!session->latestData().isEmpty());
    QCOMPARE(ConsoleMonitor::deviceLine(session), line);

    // The identity and state come from upsInfo.
    QByteArray model("Tower 11");
    model.resize(64);
    client->flushUpsInfo(QStringLiteral("upsIdentModel"), model);
    client->flushUpsInfo(QStringLiteral("state"), 0);
    QVERIFY(ConsoleMonitor::deviceLine(session).startsWith(QStringLiteral("dev-a  communicating  Tower 11  ")));
    client->flushUpsInfo(QStringLiteral("state"), 1);
    QVERIFY(ConsoleMonitor::deviceLine(session).startsWith(QStringLiteral("dev-a  lost  Tower 11  ")));
}

QTEST_MAIN(TestHostRouting)
#include "tst_host_routing.moc"
