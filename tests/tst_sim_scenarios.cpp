// The simulated UPS itself: scenarios, profiles and the data point image.
#include <QTcpServer>
#include <QtTest>

#include "upssimulator.h"

Q_DECLARE_METATYPE(UpsSimulator::Profile)

namespace {

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

int signedValue(quint16 raw)
{
    return qint16(raw);
}

} // namespace

class TestSimScenarios : public QObject
{
    Q_OBJECT

private slots:
    void scenarioNames();
    void progression_data();
    void progression();
    void mainsFailureAtHighTimeScale();
    void mainsFailureRunsBatteryDown();
    void mainsReturnRecharges();
    void phaseCounts_data();
    void phaseCounts();
    void normalState_data();
    void normalState();
    void profileImageIsFreshSimulator_data();
    void profileImageIsFreshSimulator();
    void pinnedMeasurementsAndForcedAlarms();
    void invalidArgumentsIgnored();
};

void TestSimScenarios::scenarioNames()
{
    const QStringList names = UpsSimulator::scenarioNames();
    for (const char *name : {"normal", "mains-failure", "mains-return", "demo", "bypass", "alarm-flips"})
        QVERIFY2(names.contains(QLatin1String(name)), name);

    UpsSimulator sim;
    QVERIFY(sim.setScenario(QStringLiteral("bypass")));
    QVERIFY(!sim.setScenario(QStringLiteral("flood")));
    QCOMPARE(sim.scenario(), QStringLiteral("bypass"));
}

void TestSimScenarios::progression_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<int>("source");
    QTest::addColumn<QList<int>>("raised");
    QTest::addColumn<QList<int>>("clear");

    auto row = [](const char *name, const char *scenario, double seconds, int source, QList<int> raised,
                  QList<int> clear) {
        QTest::newRow(name) << QString::fromLatin1(scenario) << seconds << source << raised << clear;
    };
    row("normal stays online", "normal", 600, 3, {}, {2, 3, 6, 9, 14});
    row("mains-failure before", "mains-failure", 4.5, 3, {}, {2, 6});
    row("mains-failure on battery", "mains-failure", 6, 5, {2, 6}, {3});
    row("mains-failure battery low", "mains-failure", 110, 5, {2, 3, 6}, {4, 14});
    row("mains-failure exhausted", "mains-failure", 200, 2, {4, 6, 14}, {2, 3});
    row("mains-return low before return", "mains-return", 119, 5, {2, 3}, {});
    row("mains-return back", "mains-return", 121, 3, {}, {2, 3, 4, 6});
    row("demo before failure", "demo", 9, 3, {}, {2});
    row("demo on battery", "demo", 11, 5, {2, 6}, {3});
    row("demo battery low", "demo", 44, 5, {2, 3}, {4, 14});
    row("demo mains back", "demo", 46, 3, {}, {2, 3, 6});
    row("demo stays normal", "demo", 130, 3, {}, {2, 3, 6});
    row("bypass before", "bypass", 4, 3, {}, {9});
    row("bypass", "bypass", 6, 4, {9}, {2, 6});
    row("alarm-flips first", "alarm-flips", 6, 3, {5}, {8, 16});
    row("alarm-flips three on", "alarm-flips", 16, 3, {5, 8, 16}, {});
    row("alarm-flips 5 off", "alarm-flips", 21, 3, {8, 16}, {5});
    row("alarm-flips all off", "alarm-flips", 31, 3, {}, {5, 8, 16});
    row("alarm-flips repeats", "alarm-flips", 36, 3, {5}, {8, 16});
}

void TestSimScenarios::progression()
{
    QFETCH(QString, scenario);
    QFETCH(double, seconds);
    QFETCH(int, source);
    QFETCH(QList<int>, raised);
    QFETCH(QList<int>, clear);

    UpsSimulator sim;
    QVERIFY(sim.setScenario(scenario));
    sim.advance(seconds);
    QCOMPARE(int(sim.measurement(24)), source);
    for (int number : raised)
        QVERIFY2(sim.alarm(number), qPrintable(QStringLiteral("alarm %1 not raised").arg(number)));
    for (int number : clear)
        QVERIFY2(!sim.alarm(number), qPrintable(QStringLiteral("alarm %1 raised").arg(number)));

    // Many small steps tell the same story as one big one.
    UpsSimulator stepped;
    stepped.setScenario(scenario);
    for (int i = 0; i < 100; ++i)
        stepped.advance(seconds / 100);
    QCOMPARE(stepped.measurement(24), sim.measurement(24));
    QCOMPARE(stepped.measurement(0), sim.measurement(0));
}

void TestSimScenarios::mainsFailureAtHighTimeScale()
{
    UpsSimulator sim;
    QVERIFY(sim.setScenario(QStringLiteral("mains-failure")));
    QSignalSpy spy(&sim, &UpsSimulator::alarmChanged);
    QVERIFY(sim.start(QStringLiteral("127.0.0.1"), freePort()));
    sim.setTimeScale(400);
    QTRY_VERIFY_WITH_TIMEOUT(sim.alarm(3), 5000);

    QList<QPair<int, bool>> changes;
    for (const QList<QVariant> &args : qAsConst(spy))
        changes << qMakePair(args.at(0).toInt(), args.at(1).toBool());
    const int onBattery = changes.indexOf(qMakePair(2, true));
    const int low = changes.indexOf(qMakePair(3, true));
    QVERIFY(onBattery >= 0);
    QVERIFY(low > onBattery);
    QVERIFY(changes.contains(qMakePair(6, true)));
    QCOMPARE(int(sim.measurement(0)), 3);
}

void TestSimScenarios::mainsFailureRunsBatteryDown()
{
    UpsSimulator sim;
    sim.setScenario(QStringLiteral("mains-failure"));
    const int remainingFull = sim.measurement(2);
    sim.advance(30);
    const QList<int> lineIds = {9, 12, 15, 18, 42, 44};
    for (int id : lineIds)
        QCOMPARE(int(sim.measurement(id)), 0);
    QCOMPARE(int(sim.measurement(27)), 230);
    QCOMPARE(int(sim.measurement(25)), 500);
    QVERIFY(signedValue(sim.measurement(5)) < 0);
    QCOMPARE(int(sim.measurement(1)), 25);  // seconds on battery
    QCOMPARE(int(sim.measurement(7)), 1);   // mains failures
    QCOMPARE(int(sim.measurement(0)), 2);
    const int capacity = sim.measurement(3);
    QVERIFY(capacity < 100);
    QVERIFY(sim.measurement(2) < remainingFull);

    sim.advance(80);
    QVERIFY(sim.measurement(3) < 25);
    QVERIFY(sim.measurement(3) < capacity);
    QCOMPARE(int(sim.measurement(0)), 3);

    sim.advance(90);  // exhausted: the output goes off
    QCOMPARE(int(sim.measurement(0)), 4);
    QCOMPARE(int(sim.measurement(3)), 0);
    QCOMPARE(int(sim.measurement(27)), 0);
    QCOMPARE(int(sim.measurement(5)), 0);
}

void TestSimScenarios::mainsReturnRecharges()
{
    UpsSimulator sim;
    sim.setScenario(QStringLiteral("mains-return"));
    sim.advance(121);
    QCOMPARE(int(sim.measurement(9)), 230);
    QCOMPARE(int(sim.measurement(15)), 500);
    QCOMPARE(int(sim.measurement(1)), 0);
    QVERIFY(signedValue(sim.measurement(5)) > 0);
    const int capacity = sim.measurement(3);
    QVERIFY(capacity < 25);
    sim.advance(120);
    QVERIFY(sim.measurement(3) > capacity);
}

void TestSimScenarios::phaseCounts_data()
{
    QTest::addColumn<UpsSimulator::Profile>("profile");
    QTest::addColumn<int>("phases");
    QTest::newRow("single") << UpsSimulator::Profile::Single << 1;
    QTest::newRow("three") << UpsSimulator::Profile::Three << 3;
}

void TestSimScenarios::phaseCounts()
{
    QFETCH(UpsSimulator::Profile, profile);
    QFETCH(int, phases);
    UpsSimulator sim(profile);
    sim.setScenario(QStringLiteral("bypass"));
    sim.advance(10);  // bypass carries current too
    for (int id : {8, 26, 43})
        QCOMPARE(int(sim.measurement(id)), phases);

    // First id of each per-phase group; the group holds 3 values (2 apart for 32-bit powers).
    const QList<QPair<int, int>> groups = {{9, 1}, {12, 1}, {15, 1}, {18, 2}, {27, 1}, {30, 1},
                                           {33, 2}, {39, 1}, {44, 1}, {47, 1}, {50, 2}};
    for (const auto &group : groups) {
        QSet<int> values;
        for (int p = 0; p < 3; ++p) {
            const int value = sim.measurement(group.first + p * group.second);
            QVERIFY2((value > 0) == (p < phases), qPrintable(QString::number(group.first + p * group.second)));
            values << value;
        }
        if (phases == 3 && group.first != 15)
            QVERIFY2(values.size() > 1, qPrintable(QString::number(group.first)));
    }
}

void TestSimScenarios::normalState_data()
{
    phaseCounts_data();
}

void TestSimScenarios::normalState()
{
    QFETCH(UpsSimulator::Profile, profile);
    const QMap<int, QVariant> image = UpsSimulator::profileImage(profile);
    const QList<QPair<int, int>> expected = {{0, 2}, {3, 100}, {6, 25}, {9, 230}, {15, 500}, {24, 3},
                                             {25, 500}, {27, 230}, {39, 35}, {42, 500}, {44, 230},
                                             {56, 230}, {57, 500}, {58, 230}, {59, 500}, {65, 2}};
    for (const auto &pair : expected)
        QCOMPARE(image.value(pair.first).toInt(), pair.second);
    QVERIFY(image.value(2).toInt() >= 10 && image.value(2).toInt() <= 600);  // minutes left
    QVERIFY(image.value(4).toInt() > 0);
    const int activePower = image.value(62).toInt();
    QVERIFY(activePower >= 1 && activePower <= 9999999);
    QVERIFY(image.value(60).toInt() >= activePower);
    for (int id = 2000; id <= 2026; ++id)
        QCOMPARE(image.value(id).toInt(), 0);
}

void TestSimScenarios::profileImageIsFreshSimulator_data()
{
    phaseCounts_data();
}

void TestSimScenarios::profileImageIsFreshSimulator()
{
    QFETCH(UpsSimulator::Profile, profile);
    const QMap<int, QVariant> image = UpsSimulator::profileImage(profile);
    QCOMPARE(image, UpsSimulator(profile).dataPointImage());

    QCOMPARE(image.size(), 73 + 27 + 7);
    for (int id = 0; id <= 72; ++id)
        QCOMPARE(image.value(id).userType(), int(QMetaType::Int));
    for (int id = 2000; id <= 2026; ++id)
        QCOMPARE(image.value(id).userType(), int(QMetaType::Int));
    const QMap<int, int> sizes = {{4000, 64}, {4001, 32}, {4002, 64}, {4003, 64},
                                  {4004, 64}, {4005, 64}, {4006, 32}};
    for (auto it = sizes.cbegin(); it != sizes.cend(); ++it) {
        const QVariant block = image.value(it.key());
        QCOMPARE(block.userType(), int(QMetaType::QByteArray));
        QCOMPARE(block.toByteArray().size(), it.value());
        QVERIFY(block.toByteArray().at(0) != '\0');
    }
}

void TestSimScenarios::pinnedMeasurementsAndForcedAlarms()
{
    UpsSimulator sim;
    sim.setScenario(QStringLiteral("mains-failure"));
    sim.setMeasurement(5, 0xFFFF);
    sim.setAlarm(3, true);
    sim.advance(30);
    QCOMPARE(sim.measurement(5), quint16(0xFFFF));
    QVERIFY(sim.alarm(3));  // forced on, its condition has not changed yet

    sim.releaseMeasurement(5);
    QVERIFY(signedValue(sim.measurement(5)) < 0);
    sim.setMeasurement(9, 123);
    QVERIFY(sim.setScenario(QStringLiteral("normal")));
    QCOMPARE(int(sim.measurement(9)), 230);
    QVERIFY(!sim.alarm(3));
}

void TestSimScenarios::invalidArgumentsIgnored()
{
    UpsSimulator sim;
    QSignalSpy spy(&sim, &UpsSimulator::alarmChanged);
    const QMap<int, QVariant> before = sim.dataPointImage();

    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("alarm number 65")));
    sim.setAlarm(65, true);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("measurement id 73")));
    sim.setMeasurement(73, 1);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("identity block 4007")));
    sim.setIdentityText(4007, "x");
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("time scale")));
    sim.setTimeScale(0);
    sim.advance(-5);

    QCOMPARE(spy.size(), 0);
    QVERIFY(!sim.alarm(-1));
    QVERIFY(!sim.alarm(65));
    QCOMPARE(sim.measurement(-1), quint16(0));
    QCOMPARE(sim.timeScale(), 1.0);
    QCOMPARE(sim.scenarioTime(), 0.0);
    QCOMPARE(sim.dataPointImage(), before);

    // Alarm 64 is served although no client data point carries it.
    sim.setAlarm(64, true);
    QVERIFY(sim.alarm(64));
    QCOMPARE(spy.size(), 1);
}

QTEST_MAIN(TestSimScenarios)
#include "tst_sim_scenarios.moc"
