// The client over real sockets: request rotation, the connection state
// machine in both drive modes, configuration (and which device files are safe
// to read) and control commands.
#include <QtTest>

#include "eventrecorder.h"
#include "fakeagent.h"
#include "inifilecheck.h"
#include "orvekclient.h"
#include "testconfig.h"
#include "upscontract.h"
#include "upsframes.h"
#include "upspoints.h"

namespace {

// A client aimed at an agent on 127.0.0.1 (listening or not yet) with short
// connection waits, and what it reports.
struct Rig
{
    explicit Rig(bool listening = true, int retries = 5)
    {
        client.name = QStringLiteral("test-ups");
        port = listening ? agent.start() : closedLocalPort();
        client.setTarget(QStringLiteral("127.0.0.1"), port);
        client.retries = retries;
        client.interval = 1;
        client.setConnectTimings(0, 2000);
    }
    // One host-driven cycle now, whatever the schedule says.
    void tick(int times = 1)
    {
        for (int i = 0; i < times; ++i) {
            client.nextPollTime = 0;
            client.poll();
        }
    }
    int writes() const
    {
        const QList<QByteArray> wire = agent.requests();
        return int(std::count_if(wire.begin(), wire.end(), [](const QByteArray &f) { return quint8(f.at(7)) == 6; }));
    }

    FakeAgent agent;
    quint16 port = 0;
    OrvekClient client;
    EventRecorder rec{&client};
};

} // namespace

class TestClient : public QObject
{
    Q_OBJECT

private slots:
    void lostAndRestored_data()
    {
        QTest::addColumn<bool>("threaded");
        QTest::newRow("poll") << false;
        QTest::newRow("run") << true;
    }

    void lostAndRestored()
    {
        QFETCH(bool, threaded);
        Rig rig(false, 3);
        if (threaded) {
            rig.client.interval = 4; // run() divides again: one tick a second
            rig.client.start();
            QTRY_VERIFY_WITH_TIMEOUT(rig.rec.count(1041) == 1, 10000);
        } else {
            rig.tick(2);
            QCOMPARE(rig.rec.count(1041), 0);
            QCOMPARE(rig.client.lostState, -1);
            rig.tick();
        }
        QCOMPARE(rig.rec.types(), (QList<int>{1041, 2001}));
        const auto lost = rig.rec.events().first().second;
        QCOMPARE(QList<QVariant>({lost.value("lost"), lost.value("state"), lost.value("desc")}),
                 QList<QVariant>({1, 1, "test-ups"}));
        QCOMPARE(rig.rec.events().at(1).second, lost);

        // Further failures report nothing more.
        if (threaded)
            QTest::qWait(2500); // two or three more failed attempts
        else
            rig.tick(2);
        QCOMPARE(rig.rec.types(), (QList<int>{1041, 2001}));

        // The agent comes back on the same port: connect, then the first answer.
        QCOMPARE(rig.agent.start(rig.port), rig.port);
        if (threaded)
            QTRY_VERIFY_WITH_TIMEOUT(rig.rec.count(1040) == 1, 10000);
        else
            rig.tick(2);
        QCOMPARE(rig.rec.types().mid(0, 5), (QList<int>{1041, 2001, 1040, 2001, 2007}));
        QCOMPARE(rig.rec.ofType(1040).first().second.value("state").toInt(), 0);
        QCOMPARE(rig.client.failCount, 0);

        if (threaded) {
            rig.client.quit();
            QVERIFY(rig.client.wait(10000));
            QVERIFY(!rig.client.socket); // disposed of in its own thread
            QCOMPARE(rig.client.interval, 1);
        }
    }

    void upsInfoAfterEveryTick()
    {
        // upsInfo is written only where a value changed; after every tick it
        // must still hold each data point under its id and the device keys,
        // through changing values, alarms, identity texts and a lost agent.
        Rig rig(true, 2);
        rig.agent.setScript([](const QByteArray &request, int ordinal) {
            const quint8 function = quint8(request.at(7));
            const int quantity = quint8(request.at(11));
            QByteArray data;
            if (function == 0x02)
                return FakeAgent::Plan{FakeAgent::Step::send(FakeAgent::alarmAnswer(FakeAgent::alarmBits({ordinal % 3})))};
            for (int i = 0; i < quantity; ++i) // some registers change each rotation, some never
                data.append(char(0)).append(char(i % 2 ? ordinal / 4 : i));
            return FakeAgent::Plan{FakeAgent::Step::send(FakeAgent::answer(function, data))};
        });
        const auto check = [&rig](int tick) {
            QMap<QString, QVariant> expected;
            const DataPointMap &points = rig.client.dataPoints;
            for (auto it = points.constBegin(); it != points.constEnd(); ++it)
                expected.insert(QString::number(it.key()), *it);
            expected.insert(UpsInfo::Manufacturer, points.value(UpsPoint::Manufacturer));
            expected.insert(UpsInfo::Name, rig.client.name);
            expected.insert(UpsInfo::Model, points.value(UpsPoint::Model));
            expected.insert(UpsInfo::PortInfo, QStringLiteral("tcp:127.0.0.1:%1").arg(rig.port));
            expected.insert(UpsInfo::State, rig.client.lostState);
            expected.insert(UpsInfo::Address, QString::number(UpsFrames::UnitId));
            expected.insert(UpsInfo::Load, points.value(UpsPoint::OutputLoad).toInt());
            const QMap<QString, QVariant> info = rig.client.upsInfo;
            QCOMPARE(info.keys(), expected.keys());
            for (auto it = expected.constBegin(); it != expected.constEnd(); ++it) {
                const QVariant &got = info.value(it.key());
                QVERIFY2(got == *it && got.userType() == it->userType(),
                         qPrintable(QStringLiteral("tick %1, key %2").arg(tick).arg(it.key())));
            }
        };
        QVariant firstRotation;
        for (int t = 0; t < 16; ++t) {
            if (t == 5)
                firstRotation = rig.client.upsInfo.value(QStringLiteral("1"));
            if (t == 7) { // the agent goes away: reported lost on the second failed attempt
                rig.agent.stop();
                rig.agent.dropConnections();
            }
            if (t == 10) {
                QCOMPARE(rig.client.lostState, int(UpsInfo::CommunicationLost));
                QVERIFY(rig.agent.start(rig.port));
            }
            rig.tick();
            check(t);
            if (QTest::currentTestFailed())
                return;
        }
        QCOMPARE(rig.client.lostState, int(UpsInfo::Communicating));
        QVERIFY(firstRotation.isValid());
        QVERIFY(rig.client.upsInfo.value(QStringLiteral("1")) != firstRotation);
    }

    void silentAgentRotationIsNotLost()
    {
        // An agent that accepts but never answers: only connection attempts count.
        Rig rig(true, 1);
        rig.agent.setResponder([](const QByteArray &) { return QByteArray(); });
        rig.tick(); // the one connection attempt reaches retries = 1 at once
        QCOMPARE(rig.rec.types(), (QList<int>{1041, 2001}));
        QVERIFY(rig.agent.requests().isEmpty());
        rig.rec.clear();
        // The connection is used from the next tick; the rotation moves on without answers.
        QList<QByteArray> expected;
        for (int i = 0; i < 5; ++i) {
            rig.tick();
            expected << OrvekClient::readRequest(i % 4); // their bytes: tst_core_frames
        }
        QCOMPARE(rig.agent.requests(), expected);
        QCOMPARE(rig.client.requestIndex, 1);
        QVERIFY(rig.rec.types().isEmpty());
        QCOMPARE(rig.client.failCount, 1);
    }

    void defaultPauseAndPollSchedule()
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

    void loadConfig_data()
    {
        QTest::addColumn<QVariantMap>("values");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QList<int>>("numbers"); // port, retries, protocol, interval

        QTest::newRow("defaults") << QVariantMap{} << "" << QList<int>{502, 5, 0, 1};
        QTest::newRow("all set") << QVariantMap{{"ipAddr", "127.0.0.7"}, {"port", 1502}, {"retries", 2},
                                                {"protocol", 4}, {"interval", 60}}
                                 << "127.0.0.7" << QList<int>{1502, 2, 4, 15};
        QTest::newRow("junk numbers") << QVariantMap{{"port", "http"}, {"retries", "many"}, {"interval", "soon"},
                                                     {"protocol", "x"}}
                                      << "" << QList<int>{502, 5, 0, 1};
        QTest::newRow("out of range") << QVariantMap{{"port", 70000}, {"interval", -40}} << ""
                                      << QList<int>{502, 5, 0, 1};
    }

    void loadConfig()
    {
        QFETCH(QVariantMap, values);
        const QString device = QStringLiteral("cfg-%1").arg(QTest::currentDataTag()).replace(' ', '_');
        values.insert(QVariantMap{{"eventChooseList/3", 1}, {"eventChooseList/108", 1}, {"eventChooseList/2", "yes"}});
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

    // Which device files loadConfig may hand to QSettings: a value with '@' or '\'
    // could reach its QDataStream decoding of "@Variant(...)", which trusts the
    // sizes inside and brings the reader down.
    void unsafeDeviceFile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("line");

        const QByteArray device = "[ups1]\nipAddr=127.0.0.1\nport=1502\n";
        QTest::newRow("missing file") << QByteArray() << 0;
        QTest::newRow("sound") << device + "interval=5\neventChooseList\\3=1\n" << 0; // backslash in a key
        QTest::newRow("ipv6 address") << QByteArray("[ups1]\nipAddr=::1\nport=502\n") << 0;
        QTest::newRow("variant") << device + "interval=@Variant(\\0\\0\\0\\=12=\\0)\n" << 4;
        QTest::newRow("date time") << device + "retries=@DateTime(\\0\\0\\0\\x10\\0)\n" << 4;
        QTest::newRow("quoted") << QByteArray("[ups1]\nipAddr=\"@Variant(\\0)\"\n") << 2;
        QTest::newRow("hex escape") << device + "port=\\x40Variant(\\0)\n" << 4;
        QTest::newRow("octal escape") << device + "port=\\100Variant(\\0)\n" << 4;
        QTest::newRow("continued value") << device + "plugin=a\\\n@Variant(\\0)\n" << 4;
        // A lone CR ends a line.
        QTest::newRow("carriage returns") << QByteArray("[ups1]\r\nport=502\r\nretries=1\r@Variant(\\0)\r\n") << 4;
        QTest::newRow("crlf line numbers") << QByteArray("[ups1]\r\nport=502\r\nretries=@Variant(\\0)\r\n") << 3;
    }

    void unsafeDeviceFile()
    {
        QFETCH(QByteArray, content);
        QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("dev.ini")));
        if (!content.isNull()) {
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
            file.close();
        }
        QTEST(IniFileCheck::unsafeLine(file.fileName()), "line");
    }

    void commandFrames_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QString>("text");

        // Every id's frame is checked from the table (tst_core_frames); these go over the wire.
        QTest::newRow("1007 70000") << 1007 << "70000" << QByteArray::fromHex("000000000006010600071170")
                                    << "Shutdown UPS";
        QTest::newRow("1014 off") << 1014 << "0" << QByteArray::fromHex("00000000000601060003ffff") << "Buzzer switch";
        QTest::newRow("unknown id") << 1009 << "5" << QByteArray::fromHex("000000000006010600000000") << "";
    }

    void commandFrames()
    {
        QFETCH(int, id);
        QFETCH(QString, value);
        QFETCH(QByteArray, frame);
        QFETCH(QString, text);

        Rig rig;
        // Reads are answered, writes refused with a Modbus exception.
        rig.agent.setResponder([](const QByteArray &request) {
            return quint8(request.at(7)) == 6 ? QByteArray::fromHex("000000000003018602")
                                              : FakeAgent::defaultReply(request);
        });
        rig.tick(); // connect
        QCOMPARE(rig.client.control(id, value), 1);
        rig.tick();
        const QList<QByteArray> wire = rig.agent.requests();
        QCOMPARE(wire.size(), 2);
        QCOMPARE(wire.at(0).toHex(), frame.toHex()); // the command goes first in the tick
        QCOMPARE(wire.at(1), OrvekClient::readRequest(0));

        // Result 1: sent, although the agent refused it.
        const EventMap expected{{"controlId", id}, {"cmdId", id}, {"controlValue", value}, {"name", "test-ups"},
                                {"result", 1}, {"desc", QStringLiteral("test-ups excute %1 successful").arg(text)}};
        QCOMPARE(rig.rec.ofType(1042), (QList<EventRecorder::Event>{{1042, expected}}));
        QCOMPARE(rig.rec.count(2007), 1); // the refusal was read and did not disturb the read
    }

    void commandsWhileDisconnected()
    {
        Rig rig(false);
        rig.client.control(1003, "");
        rig.client.control(1008, "60");
        rig.client.control(1014, "1");
        rig.tick();
        // Results in arrival order, before the connection attempt of the same tick.
        QCOMPARE(rig.rec.types().mid(0, 3), (QList<int>{1042, 1042, 1042}));
        QList<QVariant> results;
        for (const auto &e : rig.rec.ofType(1042))
            results << e.second.value("cmdId") << e.second.value("result");
        QCOMPARE(results, (QList<QVariant>{1003, 0, 1008, 0, 1014, 0}));
        QCOMPARE(rig.rec.events().at(1).second.value("desc").toString(),
                 QStringLiteral("test-ups excute Standby UPS failed"));
        QVERIFY(rig.client.cmdList.isEmpty());
    }

    void commandLimitPerTick()
    {
        Rig rig;
        rig.tick();
        for (int i = 0; i < 250; ++i)
            rig.client.control(1008, QString::number(i));
        rig.tick();
        QCOMPARE(rig.writes(), 201);
        QCOMPARE(rig.rec.count(1042), 200);
        QCOMPARE(rig.client.cmdList.size(), 49);

        rig.tick();
        QCOMPARE(rig.rec.count(1042), 249); // the 201st never gets its result
        QCOMPARE(rig.rec.ofType(1042).at(200).second.value("controlValue").toString(), QStringLiteral("201"));
        QVERIFY(rig.client.cmdList.isEmpty());
    }

    void commandsFromAnotherThread()
    {
        constexpr int kProducers = 2;
        constexpr int kPerProducer = 100; // at most 200 a tick: none hits the per-tick limit
        Rig rig;
        rig.client.interval = 4;
        rig.client.start();
        QTRY_VERIFY_WITH_TIMEOUT(rig.rec.count(2007) >= 1, 10000);

        QList<QThread *> producers; // racing each other and the client's ticks
        for (int p = 0; p < kProducers; ++p) {
            producers << QThread::create([&rig, p] {
                for (int i = 0; i < kPerProducer; ++i) {
                    rig.client.control(1008, QStringLiteral("%1-%2").arg(p).arg(i));
                    if (i % 16 == 0)
                        QThread::usleep(500);
                }
            });
            producers.last()->start();
        }
        for (QThread *t : producers) {
            QVERIFY(t->wait(10000));
            delete t;
        }
        QTRY_COMPARE_WITH_TIMEOUT(rig.rec.count(1042), kProducers * kPerProducer, 15000);
        rig.client.quit();
        QVERIFY(rig.client.wait(10000));

        // Every command once, each producer's in the order it queued them.
        QMap<int, int> next;
        for (const auto &e : rig.rec.ofType(1042)) {
            const QStringList parts = e.second.value("controlValue").toString().split('-');
            QCOMPARE(parts.at(1).toInt(), next[parts.at(0).toInt()]++);
            QCOMPARE(e.second.value("result").toInt(), 1);
        }
        QCOMPARE(next, (QMap<int, int>{{0, kPerProducer}, {1, kPerProducer}}));
        QCOMPARE(rig.writes(), kProducers * kPerProducer);
    }
};

QTEST_GUILESS_MAIN(TestClient)
#include "tst_core_client.moc"
