// The client in its own thread against the simulated agent over loopback.
#include <QtTest>

#include "eventrecorder.h"
#include "orvekclient.h"
#include "upssimulator.h"

namespace {

struct Rig
{
    explicit Rig(UpsSimulator::Profile profile = UpsSimulator::Profile::Single)
        : sim(profile)
    {
    }
    bool start()
    {
        if (!sim.start(QStringLiteral("127.0.0.1"), 0))
            return false;
        client.name = QStringLiteral("e2e-ups");
        client.setTarget(QStringLiteral("127.0.0.1"), sim.port());
        client.interval = 4; // one tick a second once run() divides it
        client.setConnectTimings(0, 2000);
        client.start();
        return true;
    }
    ~Rig()
    {
        client.quit();
        client.wait();
        sim.stop();
    }

    // The first 2006 event for alarmId id, or an empty map.
    QMap<QString, QVariant> alarmEvent(int alarmId) const
    {
        for (const auto &e : recorder.ofType(2006)) {
            if (e.second.value("alarmId").toInt() == alarmId)
                return e.second;
        }
        return {};
    }

    UpsSimulator sim;
    OrvekClient client;
    EventRecorder recorder{&client};
};

QMap<QString, QVariant> upsInfoOf(OrvekClient &client)
{
    QMutexLocker locker(&client.mutex);
    return client.upsInfo;
}

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void fullRotationFillsEveryId_data();
    void fullRotationFillsEveryId();
    void alarmChangeReachesClient();
    void selfTestRaisesTestInProgress();
    void mainsFailureScenario();
};

void TestEndToEnd::fullRotationFillsEveryId_data()
{
    QTest::addColumn<UpsSimulator::Profile>("profile");
    QTest::newRow("single") << UpsSimulator::Profile::Single;
    QTest::newRow("three") << UpsSimulator::Profile::Three;
}

void TestEndToEnd::fullRotationFillsEveryId()
{
    QFETCH(UpsSimulator::Profile, profile);
    Rig rig(profile);
    QVERIFY(rig.start());
    // Connect on the first tick, then four answers.
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(2007) >= 4, 15000);
    QTRY_VERIFY(upsInfoOf(rig.client).contains("2026"));

    const QMap<QString, QVariant> info = upsInfoOf(rig.client);
    const QMap<int, QVariant> image = rig.sim.dataPointImage();
    QList<int> ids;
    for (int i = 0; i <= 72; ++i)
        ids << i;
    for (int i = 2000; i <= 2026; ++i)
        ids << i;
    for (int i = 4000; i <= 4006; ++i)
        ids << i;
    for (int id : ids) {
        const QString key = QString::number(id);
        QVERIFY2(info.contains(key), qPrintable(key));
        QCOMPARE(info.value(key), image.value(id));
    }
    QCOMPARE(info.value("4014").toString(), QStringLiteral("127.0.0.1"));
    QVERIFY(!info.contains("2027"));

    for (const char *key : {"IdentManufacturer", "name", "upsIdentModel", "portInfo", "state", "upsAddr", "upsLoad"})
        QVERIFY2(info.contains(key), key);
    QCOMPARE(info.value("name").toString(), QStringLiteral("e2e-ups"));
    QCOMPARE(info.value("state").toInt(), 0);
    QCOMPARE(info.value("upsAddr").toString(), QStringLiteral("1"));
    QCOMPARE(info.value("upsLoad").toInt(), int(rig.sim.measurement(39)));
    QCOMPARE(info.value("portInfo").toString(), QStringLiteral("tcp:127.0.0.1:%1").arg(rig.sim.port()));
    QCOMPARE(info.value("IdentManufacturer").toByteArray(), image.value(4001).toByteArray());
    QCOMPARE(info.value("8").toInt(), profile == UpsSimulator::Profile::Three ? 3 : 1);

    // The very first answer reported the communication as established.
    QCOMPARE(rig.recorder.count(1040), 1);
    QCOMPARE(rig.recorder.count(1041), 0);
}

void TestEndToEnd::alarmChangeReachesClient()
{
    Rig rig;
    QVERIFY(rig.start());
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(2007) >= 4, 15000);
    rig.sim.setAlarm(5, true);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(5).isEmpty(), 10000);
    QCOMPARE(rig.alarmEvent(5).value("alarmState").toInt(), 1);
    rig.sim.setAlarm(5, false);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(5 + 54).isEmpty(), 10000);
    QCOMPARE(rig.alarmEvent(59).value("alarmState").toInt(), 0);
    QTRY_COMPARE(upsInfoOf(rig.client).value("2005").toInt(), 0);
}

void TestEndToEnd::selfTestRaisesTestInProgress()
{
    Rig rig;
    // Slightly faster than real time: the test (about 10 s of device time)
    // still spans more than one full polling rotation.
    rig.sim.setTimeScale(1.5);
    QVERIFY(rig.start());
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(2007) >= 4, 15000);
    // Queued from this (the host's) thread while the client runs in its own.
    rig.client.control(1003, QString());
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(1042) == 1, 10000);
    const auto result = rig.recorder.ofType(1042).first().second;
    QCOMPARE(result.value("result").toInt(), 1);
    QCOMPARE(result.value("desc").toString(), QStringLiteral("e2e-ups excute Selftest successful"));
    QCOMPARE(rig.sim.writes().size(), 1);
    QCOMPARE(rig.sim.writes().first().reg, 1);
    QCOMPARE(rig.sim.writes().first().value, quint16(0xFFFF));

    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(23).isEmpty(), 10000);
    QCOMPARE(rig.alarmEvent(23).value("alarmState").toInt(), 1);
    // About 10 s of device time later the test ends.
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(23 + 54).isEmpty(), 15000);
}

void TestEndToEnd::mainsFailureScenario()
{
    Rig rig;
    QVERIFY(rig.sim.setScenario(QStringLiteral("mains-failure")));
    QVERIFY(rig.start());
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(2).isEmpty(), 20000);
    // Skip most of the discharge: the battery runs low a little later.
    rig.sim.advance(95);
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(3).isEmpty(), 20000);
    // Battery powered is reported before battery low, and battery low also as 2010.
    int poweredAt = -1;
    int lowAt = -1;
    const auto events = rig.recorder.events();
    for (int i = 0; i < events.size(); ++i) {
        if (events[i].first != 2006)
            continue;
        const int id = events[i].second.value("alarmId").toInt();
        if (id == 2 && poweredAt < 0)
            poweredAt = i;
        if (id == 3 && lowAt < 0)
            lowAt = i;
    }
    QVERIFY(poweredAt >= 0 && poweredAt < lowAt);
    QCOMPARE(events.value(lowAt + 1).first, 2010);
    QCOMPARE(upsInfoOf(rig.client).value("24").toInt(), 5); // output source: battery
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_core_endtoend.moc"
