// The client in its own thread against the simulated agent over loopback.
#include <QtTest>

#include "eventrecorder.h"
#include "orvekclient.h"
#include "upssimulator.h"

namespace {

constexpr int kRotationMs = 15000; // the connection, then four answers a second apart
constexpr int kChangeMs = 10000;   // a change shows within the next rotation

struct Rig
{
    explicit Rig(UpsSimulator::Profile profile = UpsSimulator::Profile::Single)
        : sim(profile)
    {
    }
    ~Rig()
    {
        client.quit();
        client.wait();
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

    // The first 2006 event for alarmId, or an empty map.
    QMap<QString, QVariant> alarmEvent(int alarmId) const
    {
        for (const auto &e : recorder.ofType(2006)) {
            if (e.second.value("alarmId").toInt() == alarmId)
                return e.second;
        }
        return {};
    }
    QMap<QString, QVariant> upsInfo()
    {
        QMutexLocker locker(&client.mutex);
        return client.upsInfo;
    }

    UpsSimulator sim;
    OrvekClient client;
    EventRecorder recorder{&client};
};

} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void fullRotationFillsEveryId();
    void scenarioAlarmReachesClient();
    void selfTestRaisesTestInProgress();
};

void TestEndToEnd::fullRotationFillsEveryId()
{
    Rig rig(UpsSimulator::Profile::Three);
    QVERIFY(rig.start());
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(2007) >= 4, kRotationMs);
    QTRY_VERIFY(rig.upsInfo().contains("2026"));

    const QMap<QString, QVariant> info = rig.upsInfo();
    const QMap<int, QVariant> image = rig.sim.dataPointImage();
    QCOMPARE(image.size(), 73 + 27 + 7); // ids 0..72, 2000..2026, 4000..4006
    for (auto it = image.constBegin(); it != image.constEnd(); ++it) {
        const QString key = QString::number(it.key());
        QVERIFY2(info.contains(key), qPrintable(key));
        QCOMPARE(info.value(key), it.value());
    }
    QCOMPARE(info.value("4014").toString(), QStringLiteral("127.0.0.1"));

    QCOMPARE(info.value("name").toString(), QStringLiteral("e2e-ups"));
    QCOMPARE(info.value("state").toInt(), 0);
    QCOMPARE(info.value("upsAddr").toString(), QStringLiteral("1"));
    QCOMPARE(info.value("upsLoad").toInt(), int(rig.sim.measurement(39)));
    QCOMPARE(info.value("portInfo").toString(), QStringLiteral("tcp:127.0.0.1:%1").arg(rig.sim.port()));
    QCOMPARE(info.value("IdentManufacturer").toByteArray(), image.value(4001).toByteArray());
    QCOMPARE(info.value("upsIdentModel").toByteArray(), image.value(4000).toByteArray());
}

void TestEndToEnd::scenarioAlarmReachesClient()
{
    Rig rig;
    QVERIFY(rig.sim.setScenario(QStringLiteral("mains-return")));
    rig.sim.setTimeScale(3.0);
    QVERIFY(rig.start());
    // The mains fail 5 s of device time in: alarm 2, battery powered.
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(2).isEmpty(), kRotationMs);
    QCOMPARE(rig.alarmEvent(2).value("alarmState").toInt(), 1);

    rig.sim.advance(120); // past the mains' return: cleared texts sit 54 further on
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(2 + 54).isEmpty(), kChangeMs);
    QCOMPARE(rig.alarmEvent(56).value("alarmState").toInt(), 0);
}

void TestEndToEnd::selfTestRaisesTestInProgress()
{
    Rig rig;
    QVERIFY(rig.start());
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(2007) >= 4, kRotationMs);
    // Queued from this (the host's) thread while the client runs in its own.
    rig.client.control(1003, QString());
    QTRY_VERIFY_WITH_TIMEOUT(rig.recorder.count(1042) == 1, kChangeMs);
    QCOMPARE(rig.recorder.ofType(1042).first().second.value("result").toInt(), 1);
    QCOMPARE(rig.sim.writes().size(), 1);
    QCOMPARE(rig.sim.writes().first().reg, 1);
    QCOMPARE(rig.sim.writes().first().value, quint16(0xFFFF));

    // The device test lasts about 10 s: long enough for the next alarm answer.
    QTRY_VERIFY_WITH_TIMEOUT(!rig.alarmEvent(23).isEmpty(), kChangeMs);
    QCOMPARE(rig.alarmEvent(23).value("alarmState").toInt(), 1);
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_core_endtoend.moc"
