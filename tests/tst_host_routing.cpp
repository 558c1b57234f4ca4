// How the host drives a device plug-in, checked against a scripted client: the
// order of the factory calls, device names, view requests to control(), and
// decoded data (or junk in its place) to the view and the data log.
#include <QtTest>

#include "devicesession.h"
#include "hosttestsupport.h"
#include "scriptedclient.h"

using DataMap = QMap<int, QVariant>;

class TestHostRouting : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void orderOfCallsAndNames();
    void viewRequestsReachControl_data();
    void viewRequestsReachControl();
    void decodedDataGoesToViewAndLog_data();
    void decodedDataGoesToViewAndLog();

private:
    ScriptedClient *start(const QString &name)
    {
        DeviceSession *session = m_host->addDevice(&m_factory, name);
        return session ? static_cast<ScriptedClient *>(session->client()) : nullptr;
    }

    std::unique_ptr<QTemporaryDir> m_logs;
    std::unique_ptr<DeviceHost> m_host;
    ScriptedClient m_factory;
};

void TestHostRouting::init()
{
    ScriptedClient::journal().clear();
    m_host.reset();
    m_logs.reset(new QTemporaryDir);
    m_host.reset(new DeviceHost(m_logs->path()));
}

void TestHostRouting::orderOfCallsAndNames()
{
    m_factory.retriesOnLoad = 2; // the least not warned about (1 is, see the host's faults)
    ScriptedClient *client = start(QStringLiteral("ups 1"));
    QVERIFY(client && client->isRunning());
    QCOMPARE(ScriptedClient::journal(), (QStringList{"create", "loadConfig:ups 1", "getView"}));
    QCOMPARE(m_host->session(QStringLiteral("ups 1"))->view(), client->view);
    QVERIFY(HostTest::noticeTexts(*m_host, QStringLiteral("retries")).isEmpty());

    // A taken name, a factory without clients, no factory at all.
    QVERIFY(!start(QStringLiteral("ups 1")));
    m_factory.makesClients = false;
    QVERIFY(!start(QStringLiteral("dev-b")));
    m_factory.makesClients = true;
    QVERIFY(!m_host->addDevice(nullptr, QStringLiteral("dev-c")));
    QCOMPARE(HostTest::noticeTexts(*m_host, QStringLiteral("not started")),
             (QStringList{"ups 1:not started a second time: a device of that name is already running",
                          "dev-b:not started: the plug-in made no client for it",
                          "dev-c:not started: the plug-in made no client for it"}));

    // Names that make one file name: each still writes a data log of its own.
    QVERIFY(start(QStringLiteral("ups_1")));
    const QStringList clash = HostTest::noticeTexts(*m_host, QStringLiteral("would share one file name"));
    QVERIFY2(clash.size() == 1 && clash.first().startsWith("ups_1:") && clash.first().contains("\"ups 1\""),
             qPrintable(clash.join('\n')));
    const QStringList names = m_host->deviceNames();
    QCOMPARE(names, (QStringList{"ups 1", "ups_1"}));
    for (int i = 0; i < names.size(); ++i)
        static_cast<ScriptedClient *>(m_host->session(names.at(i))->client())->sendData({{9, 200 + i}});
    for (int i = 0; i < names.size(); ++i) {
        const QString path = m_host->logs().dataFilePath(names.at(i), QDate::currentDate());
        QTRY_COMPARE(HostTest::fileLines(path).size(), 2); // header and its own row only
        QCOMPARE(HostTest::csvFields(HostTest::fileLines(path).at(1)).value(1), QString::number(200 + i));
    }
}

void TestHostRouting::viewRequestsReachControl_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<bool>("routed");
    QTest::newRow("self-test, first id") << 1003 << true;
    QTest::newRow("buzzer, last id") << 1014 << true;
    QTest::newRow("below the range") << 1002 << false;
    QTest::newRow("above the range") << 1015 << false;
}

void TestHostRouting::viewRequestsReachControl()
{
    QFETCH(int, id);
    QFETCH(bool, routed);
    ScriptedClient *client = start(QStringLiteral("dev-a"));
    QVERIFY(client);
    QSignalSpy events(m_host->session(QStringLiteral("dev-a")), &DeviceSession::eventReceived);
    client->view->control(id, QStringLiteral("0")); // what the view's widgets do
    QVERIFY(client->controls.isEmpty());              // queued, not a direct call
    QTRY_COMPARE(events.count(), 1);
    QCOMPARE(client->controls.size(), int(routed));
    if (routed)
        QCOMPARE(client->controls.first(), qMakePair(id, QStringLiteral("0")));
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
    ScriptedClient *client = start(QStringLiteral("dev/a"));
    QVERIFY(client);
    DeviceSession *session = m_host->session(QStringLiteral("dev/a"));
    QSignalSpy events(session, &DeviceSession::eventReceived);
    // An answer without data points (alarms, identity) first: nothing to show.
    emit client->postDEvent(2007, {{"dis_alarm", 0}});
    emit client->postDEvent(2007, {{"data", data}, {"raw_data", QByteArray(146, '\0')}});
    QTRY_COMPARE(events.count(), 2);

    QCOMPARE(client->view->calls, accepted ? QStringList({"flushData", "refreshData"}) : QStringList());
    QCOMPARE(client->view->dataMap, accepted ? data.value<DataMap>() : DataMap());
    QCOMPARE(session->latestData(), client->view->dataMap);
    QCOMPARE(session->status().alarmActive, accepted);
    // One header and one row for the one answer with data points; every
    // column the plug-in formats is written, commas quoted.
    const QStringList lines = HostTest::fileLines(m_host->logs().dataFilePath(session->name(), QDate::currentDate()));
    QCOMPARE(lines.size(), accepted ? 2 : 0);
    if (accepted)
        QCOMPARE(HostTest::csvFields(lines.at(1)).mid(1), (QStringList{"230", "a,b"}));
}

QTEST_MAIN(TestHostRouting)
#include "tst_host_routing.moc"
