// The client over real sockets: request frames, rotation, the connection
// state machine in both drive modes, configuration and control commands.
#include <QtTest>
#include <atomic>

#include "eventrecorder.h"
#include "fakeagent.h"
#include "orvekclient.h"
#include "testconfig.h"

namespace {

constexpr int kFastPauseMs = 0;
constexpr int kFastConnectWaitMs = 2000;

// A client aimed at 127.0.0.1:port with short connection waits.
void aim(OrvekClient &client, quint16 port, int retries = 5)
{
    client.name = QStringLiteral("test-ups");
    client.setTarget(QStringLiteral("127.0.0.1"), port);
    client.retries = retries;
    client.interval = 1;
    client.setConnectTimings(kFastPauseMs, kFastConnectWaitMs);
}

// One host-driven cycle now, whatever the schedule says.
void tick(OrvekClient &client)
{
    client.nextPollTime = 0;
    client.poll();
}

bool isWrite(const QByteArray &frame)
{
    return frame.size() == 12 && quint8(frame.at(7)) == 0x06;
}

} // namespace

class TestClient : public QObject
{
    Q_OBJECT

private slots:
    void requestRotationOnTheWire();
    void lostAndRestored_data();
    void lostAndRestored();
    void silentAgentIsNotLost();
    void defaultPauseAndPollSchedule();
    void loadConfig_data();
    void loadConfig();
    void commandFrames_data();
    void commandFrames();
    void commandsWhileDisconnected();
    void commandLimitPerTick();
    void commandsFromAnotherThread();
};

void TestClient::requestRotationOnTheWire()
{
    FakeAgent agent;
    OrvekClient client;
    aim(client, agent.start());
    tick(client); // connects; the connection is used from the next tick
    QVERIFY(agent.requests().isEmpty());
    for (int i = 0; i < 5; ++i)
        tick(client);
    const QList<QByteArray> expected = {
        QByteArray::fromHex("000000000006010402010070"), QByteArray::fromHex("000000000006010402710050"),
        QByteArray::fromHex("000000000006010401010049"), QByteArray::fromHex("000000000006010201010041"),
        QByteArray::fromHex("000000000006010402010070"),
    };
    QCOMPARE(agent.requests(), expected);
    QCOMPARE(client.requestIndex, 1);
}

void TestClient::lostAndRestored_data()
{
    QTest::addColumn<bool>("threaded");
    QTest::newRow("poll") << false;
    QTest::newRow("run") << true;
}

void TestClient::lostAndRestored()
{
    QFETCH(bool, threaded);
    const quint16 port = closedLocalPort();
    OrvekClient client;
    aim(client, port, 3);
    EventRecorder rec(&client);

    if (threaded) {
        client.interval = 4; // run() divides again: one tick a second
        client.start();
        QTRY_VERIFY_WITH_TIMEOUT(rec.count(1041) == 1, 10000);
    } else {
        tick(client);
        tick(client);
        QCOMPARE(rec.count(1041), 0);
        QCOMPARE(client.lostState, -1);
        tick(client);
    }
    QCOMPARE(rec.types(), (QList<int>{1041, 2001}));
    const auto lost = rec.events().first().second;
    QCOMPARE(QList<QVariant>({lost.value("lost"), lost.value("state"), lost.value("desc")}),
             QList<QVariant>({1, 1, "test-ups"}));
    QCOMPARE(rec.events().at(1).second, lost);

    // Further failures report nothing more.
    if (threaded) {
        QTest::qWait(2500); // two or three more failed attempts
    } else {
        tick(client);
        tick(client);
    }
    QCOMPARE(rec.types(), (QList<int>{1041, 2001}));

    // The agent comes back on the same port: connect, then the first answer.
    FakeAgent agent;
    QCOMPARE(agent.start(port), port);
    if (threaded) {
        QTRY_VERIFY_WITH_TIMEOUT(rec.count(1040) == 1, 10000);
    } else {
        tick(client);
        tick(client);
    }
    QCOMPARE(rec.types().mid(0, 5), (QList<int>{1041, 2001, 1040, 2001, 2007}));
    QCOMPARE(rec.ofType(1040).first().second.value("state").toInt(), 0);
    QCOMPARE(client.failCount, 0);

    if (threaded) {
        client.quit();
        QVERIFY(client.wait(10000));
        QVERIFY(!client.socket); // disposed of in its own thread
        QCOMPARE(client.interval, 1);
    }
}

void TestClient::silentAgentIsNotLost()
{
    // An agent that accepts but never answers: only connection attempts count.
    FakeAgent agent;
    agent.setResponder([](const QByteArray &) { return QByteArray(); });
    OrvekClient client;
    aim(client, agent.start(), 1);
    EventRecorder rec(&client);
    tick(client); // the one connection attempt reaches retries = 1 at once
    QCOMPARE(rec.types(), (QList<int>{1041, 2001}));
    rec.clear();
    for (int i = 0; i < 3; ++i)
        tick(client);
    QVERIFY(rec.types().isEmpty());
    QCOMPARE(client.failCount, 1);
    QCOMPARE(client.requestIndex, 3); // the rotation moved on without answers
}

void TestClient::defaultPauseAndPollSchedule()
{
    // Untouched timings: the client pauses 5 s before every connection attempt.
    OrvekClient client;
    client.setTarget(QStringLiteral("127.0.0.1"), closedLocalPort());
    client.retries = 1;
    client.interval = 100;
    QList<int> workStates;
    connect(&client, &CollectThread::postDEvent, this,
            [&client, &workStates](int, QMap<QString, QVariant>) { workStates << client.getWorkState(); },
            Qt::DirectConnection);
    QElapsedTimer timer;
    timer.start();
    client.poll();
    QVERIFY2(timer.elapsed() >= 4900, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(workStates, (QList<int>{1, 1})); // 1041 and 2001, emitted inside poll()
    QCOMPARE(client.getWorkState(), 0);
    client.poll(); // not due again before the interval
    QCOMPARE(client.failCount, 1);
}

void TestClient::loadConfig_data()
{
    QTest::addColumn<QVariantMap>("values");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QList<int>>("numbers"); // port, retries, protocol, interval

    QTest::newRow("defaults") << QVariantMap{} << "" << QList<int>{502, 5, 0, 1};
    QTest::newRow("all set") << QVariantMap{{"ipAddr", "127.0.0.7"}, {"port", 1502}, {"retries", 2}, {"protocol", 4},
                                            {"interval", 60}}
                             << "127.0.0.7" << QList<int>{1502, 2, 4, 15};
    QTest::newRow("junk numbers") << QVariantMap{{"port", "http"}, {"retries", "many"}, {"interval", "soon"},
                                                 {"protocol", "x"}}
                                  << "" << QList<int>{502, 5, 0, 1};
    QTest::newRow("out of range") << QVariantMap{{"port", 70000}, {"interval", -40}} << "" << QList<int>{502, 5, 0, 1};
}

void TestClient::loadConfig()
{
    QFETCH(QVariantMap, values);
    const QString device = QStringLiteral("cfg-%1").arg(QTest::currentDataTag()).replace(' ', '_');
    values.insert(QStringLiteral("eventChooseList/3"), 1);
    values.insert(QStringLiteral("eventChooseList/108"), 1);
    values.insert(QStringLiteral("eventChooseList/2"), QStringLiteral("yes"));
    writeDeviceConfig(device, values);

    OrvekClient client;
    client.name = device;
    client.loadConfig();
    removeDeviceConfig(device);
    QTEST(client.targetAddress, "address");
    QTEST((QList<int>{client.targetPort, client.retries, client.protocol, client.interval}), "numbers");
    QCOMPARE(client.eventChooseList.size(), 108);
    QCOMPARE(client.eventChooseList.value(2), 1); // key 3 fills index 2
    QCOMPARE(client.eventChooseList.value(107), 1);
    QCOMPARE(client.eventChooseList.value(1), 0); // not a number
}

void TestClient::commandFrames_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("text");

    // Every id's frame is checked from the table (tst_core_frames); these go over the wire.
    QTest::newRow("1007 70000") << 1007 << "70000" << QByteArray::fromHex("000000000006010600071170") << "Shutdown UPS";
    QTest::newRow("1014 off") << 1014 << "0" << QByteArray::fromHex("00000000000601060003ffff") << "Buzzer switch";
    QTest::newRow("unknown id") << 1009 << "5" << QByteArray::fromHex("000000000006010600000000") << "";
}

void TestClient::commandFrames()
{
    QFETCH(int, id);
    QFETCH(QString, value);
    QFETCH(QByteArray, frame);
    QFETCH(QString, text);

    FakeAgent agent;
    agent.setResponder([](const QByteArray &request) {
        // Reads are answered, writes refused with a Modbus exception.
        return isWrite(request) ? QByteArray::fromHex("000000000003018602") : FakeAgent::defaultReply(request);
    });
    OrvekClient client;
    aim(client, agent.start());
    tick(client); // connect
    EventRecorder rec(&client);
    QCOMPARE(client.control(id, value), 1);
    tick(client);
    const QList<QByteArray> wire = agent.requests();
    QCOMPARE(wire.size(), 2);
    QCOMPARE(wire.at(0).toHex(), frame.toHex()); // the command goes first in the tick
    QCOMPARE(wire.at(1), OrvekClient::readRequest(0));

    // Result 1: sent, although the agent refused it.
    const EventMap expected{{"controlId", id}, {"cmdId", id}, {"controlValue", value}, {"name", "test-ups"},
                            {"result", 1}, {"desc", QStringLiteral("test-ups excute %1 successful").arg(text)}};
    QCOMPARE(rec.ofType(1042), (QList<EventRecorder::Event>{{1042, expected}}));
    QCOMPARE(rec.count(2007), 1); // the refusal was read and did not disturb the read
}

void TestClient::commandsWhileDisconnected()
{
    OrvekClient client;
    aim(client, closedLocalPort());
    EventRecorder rec(&client);
    client.control(1003, "");
    client.control(1008, "60");
    client.control(1014, "1");
    tick(client);
    // Results in arrival order, before the connection attempt of the same tick.
    QCOMPARE(rec.types().mid(0, 3), (QList<int>{1042, 1042, 1042}));
    QList<QVariant> results;
    for (const auto &e : rec.ofType(1042))
        results << e.second.value("cmdId") << e.second.value("result");
    QCOMPARE(results, (QList<QVariant>{1003, 0, 1008, 0, 1014, 0}));
    QCOMPARE(rec.events().at(1).second.value("desc").toString(), QStringLiteral("test-ups excute Standby UPS failed"));
    QVERIFY(client.cmdList.isEmpty());
}

void TestClient::commandLimitPerTick()
{
    FakeAgent agent;
    OrvekClient client;
    aim(client, agent.start());
    tick(client);
    EventRecorder rec(&client);
    for (int i = 0; i < 250; ++i)
        client.control(1008, QString::number(i));
    tick(client);
    const QList<QByteArray> wire = agent.requests();
    const int writes = int(std::count_if(wire.begin(), wire.end(), isWrite));
    QCOMPARE(writes, 201);
    QCOMPARE(rec.count(1042), 200);
    QCOMPARE(client.cmdList.size(), 49);

    tick(client);
    QCOMPARE(rec.count(1042), 249); // the 201st never gets its result
    QCOMPARE(rec.ofType(1042).at(200).second.value("controlValue").toString(), QStringLiteral("201"));
    QVERIFY(client.cmdList.isEmpty());
}

void TestClient::commandsFromAnotherThread()
{
    constexpr int kProducers = 2;
    constexpr int kPerProducer = 100; // at most 200 a tick: none hits the per-tick limit
    FakeAgent agent;
    OrvekClient client;
    aim(client, agent.start());
    client.interval = 4;
    EventRecorder rec(&client);
    client.start();
    QTRY_VERIFY_WITH_TIMEOUT(rec.count(2007) >= 1, 10000);

    std::atomic<bool> go{false};
    QList<QThread *> producers;
    for (int p = 0; p < kProducers; ++p) {
        producers << QThread::create([&client, &go, p] {
            while (!go.load())
                QThread::yieldCurrentThread();
            for (int i = 0; i < kPerProducer; ++i) {
                client.control(1008, QStringLiteral("%1-%2").arg(p).arg(i));
                if (i % 16 == 0)
                    QThread::usleep(500);
            }
        });
        producers.last()->start();
    }
    go = true;
    for (QThread *t : producers) {
        QVERIFY(t->wait(10000));
        delete t;
    }
    QTRY_COMPARE_WITH_TIMEOUT(rec.count(1042), kProducers * kPerProducer, 15000);
    client.quit();
    QVERIFY(client.wait(10000));

    // Every command once, each producer's in the order it queued them.
    QMap<int, int> lastIndex;
    for (const auto &e : rec.ofType(1042)) {
        const QStringList parts = e.second.value("controlValue").toString().split('-');
        QCOMPARE(parts.at(1).toInt(), lastIndex.value(parts.at(0).toInt(), -1) + 1);
        lastIndex[parts.at(0).toInt()] = parts.at(1).toInt();
        QCOMPARE(e.second.value("result").toInt(), 1);
    }
    QCOMPARE(lastIndex, (QMap<int, int>{{0, kPerProducer - 1}, {1, kPerProducer - 1}}));
    const QList<QByteArray> wire = agent.requests();
    QCOMPARE(int(std::count_if(wire.begin(), wire.end(), isWrite)), kProducers * kPerProducer);
}

QTEST_GUILESS_MAIN(TestClient)
#include "tst_core_client.moc"
