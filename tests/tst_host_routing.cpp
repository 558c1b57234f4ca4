// How the host drives a device plug-in, checked against a scripted client: the
// order of the factory calls, routing of view requests to control(), and
// decoded data (or junk in its place) to the view and the data log. (Event
// log lines are checked end to end.)
#include <QtTest>

#include "collectthread.h"
#include "collectview.h"
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
    FakeView *view = nullptr;
    QList<QPair<int, QString>> controls;
    QList<Qt::HANDLE> controlThreads;

    ~FakeClient() override { delete view; }

    CollectThread *create(void *) override
    {
        g_journal << QStringLiteral("create");
        return makesClients ? new FakeClient : nullptr;
    }
    void loadConfig() override { g_journal << QStringLiteral("loadConfig:") + name; }
    CollectView *getView() override
    {
        g_journal << QStringLiteral("getView");
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
    QStringList getDataLogDesc() override { return {QStringLiteral("Input"), QStringLiteral("Mode")}; }
    QStringList changeLogData(QMap<int, QVariant> data) override
    {
        // 15 columns like the real plug-in's.
        return {data.value(9).toString(), "a,b", "", "", "", "", "", "", "", "", "", "", "", "", ""};
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
    void decodedDataGoesToViewAndLog_data();
    void decodedDataGoesToViewAndLog();

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
    QCOMPARE(m_host->session(QStringLiteral("dev-a"))->view(), client->view);

    // A taken name, a factory without clients, no factory at all.
    QVERIFY(!m_host->addDevice(&m_factory, QStringLiteral("dev-a")));
    m_factory.makesClients = false;
    QVERIFY(!m_host->addDevice(&m_factory, QStringLiteral("dev-b")));
    QVERIFY(!m_host->addDevice(nullptr, QStringLiteral("dev-c")));
    QCOMPARE(m_host->deviceNames(), QStringList{"dev-a"});
}

void TestHostRouting::viewRequestsReachControl_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("routed");
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

void TestHostRouting::decodedDataGoesToViewAndLog_data()
{
    QTest::addColumn<QVariant>("data");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("data points") << QVariant::fromValue(DataMap{{9, 230}, {2000, 1}}) << true;
    QTest::newRow("text") << QVariant(QStringLiteral("junk")) << false;
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

QTEST_MAIN(TestHostRouting)
#include "tst_host_routing.moc"
