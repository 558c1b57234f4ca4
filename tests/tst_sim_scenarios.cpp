// The simulated UPS itself: scenarios, command effects, profiles and the
// data point image.
#include <QtTest>

#include "upssimulator.h"

Q_DECLARE_METATYPE(UpsSimulator::Profile)

class TestSimScenarios : public QObject
{
    Q_OBJECT

private slots:
    void stories_data();
    void stories();
    void batteryRunsDownAndRecharges();
    void outputOffZeroesOutputValues();
    void phaseCounts_data();
    void phaseCounts();
    void pinnedMeasurementsAndForcedAlarms();
    void invalidArgumentsIgnored();
};

// Steps: "wR=V" writes value V to register R, "tS" advances S simulated seconds.
void TestSimScenarios::stories_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<int>("source");
    QTest::addColumn<QList<int>>("raised");
    QTest::addColumn<QList<int>>("clear");

    auto row = [](const char *name, const char *scenario, const QString &steps, int source, QList<int> raised,
                  QList<int> clear) {
        QTest::newRow(name) << QString::fromLatin1(scenario) << steps.split(QLatin1Char(' ')) << source << raised
                            << clear;
    };
    row("normal stays online", "normal", "t600", 3, {}, {2, 3, 6, 9, 14});
    row("mains-failure before", "mains-failure", "t4.5", 3, {}, {2, 6});
    row("mains-failure on battery", "mains-failure", "t6", 5, {2, 6}, {3});
    row("mains-failure battery low", "mains-failure", "t110", 5, {2, 3, 6}, {4, 14});
    row("mains-failure exhausted", "mains-failure", "t200", 2, {4, 6, 14}, {2, 3});
    row("mains-return back", "mains-return", "t121", 3, {}, {2, 3, 4, 6});
    row("bypass", "bypass", "t6", 4, {9}, {2, 6});
    row("alarm-flips repeats", "alarm-flips", "t36", 3, {5}, {8, 16});
    row("demo on battery", "demo", "t20", 5, {2}, {3});
    row("demo mains back", "demo", "t50", 3, {}, {2});

    // The control commands' effects; 65535 is the trigger value.
    row("shutdown countdown", "normal", "w7=12 t6.5", 3, {21}, {22, 14, 11});
    row("shutdown imminent", "normal", "w7=12 t7.5", 3, {21, 22}, {14});
    row("shutdown done", "normal", "w7=12 t12.5", 2, {14, 11}, {21, 22, 15});
    row("shutdown cancelled", "normal", "w7=12 t3 w5=65535 t20", 3, {}, {21, 22, 14, 11});
    row("standby", "normal", "w8=60 t61", 2, {14, 15, 11, 12}, {21});
    row("self-test passed", "normal", "w1=65535 t10.5", 3, {}, {23, 19});
    row("self-test value 0 ignored", "normal", "w1=0", 3, {}, {23});
    row("self-test refused while off", "normal", "w7=0 w1=65535", 2, {14}, {23});
    row("discharge to low", "normal", "w2=65535 t60", 5, {23, 26}, {2, 6});
    row("discharge ends at low battery", "normal", "w2=65535 t4000", 3, {}, {23, 26, 3});
    // mains back at 120 s with the battery well below 25 %
    row("self-test fails on low battery", "mains-return", "t121 w1=65535 t11", 3, {19}, {23, 3});
    row("timed discharge running", "normal", "w6=2 t119", 5, {23, 26}, {});
    row("timed discharge over", "normal", "w6=2 t121", 3, {}, {23, 26});
}

void TestSimScenarios::stories()
{
    QFETCH(QString, scenario);
    QFETCH(QStringList, steps);
    QFETCH(QList<int>, raised);
    QFETCH(QList<int>, clear);

    UpsSimulator sim;
    QVERIFY(sim.setScenario(scenario));
    for (const QString &step : steps) {
        if (step.startsWith(QLatin1Char('w'))) {
            const QStringList parts = step.mid(1).split(QLatin1Char('='));
            sim.writeRegister(parts.at(0).toInt(), quint16(parts.at(1).toUInt()));
        } else {
            sim.advance(step.mid(1).toDouble());
        }
    }
    QTEST(int(sim.measurement(24)), "source");
    for (int number : raised)
        QVERIFY2(sim.alarm(number), qPrintable(QStringLiteral("alarm %1 not raised").arg(number)));
    for (int number : clear)
        QVERIFY2(!sim.alarm(number), qPrintable(QStringLiteral("alarm %1 raised").arg(number)));

    if (steps.size() == 1 && steps.first().startsWith(QLatin1Char('t'))) {
        // Many small steps tell the same story as one big one.
        UpsSimulator stepped;
        stepped.setScenario(scenario);
        for (int i = 0; i < 100; ++i)
            stepped.advance(steps.first().mid(1).toDouble() / 100);
        QCOMPARE(stepped.measurement(24), sim.measurement(24));
        QCOMPARE(stepped.measurement(0), sim.measurement(0));
    }
}

void TestSimScenarios::batteryRunsDownAndRecharges()
{
    UpsSimulator sim;
    sim.setScenario(QStringLiteral("mains-failure"));
    const int remainingFull = sim.measurement(2);
    sim.advance(30);
    for (int id : {9, 12, 15, 18, 42, 44}) // the mains and the bypass are gone
        QCOMPARE(int(sim.measurement(id)), 0);
    QCOMPARE(int(sim.measurement(27)), 230);
    QVERIFY(qint16(sim.measurement(5)) < 0); // two's complement, discharging
    QCOMPARE(int(sim.measurement(1)), 25);        // seconds on battery
    QCOMPARE(int(sim.measurement(7)), 1);         // mains failures
    QVERIFY(sim.measurement(3) < 100);
    QVERIFY(sim.measurement(2) < remainingFull);
    sim.advance(170); // exhausted: the output goes off
    QCOMPARE(int(sim.measurement(0)), 4);
    QCOMPARE(int(sim.measurement(3)), 0);
    QCOMPARE(int(sim.measurement(27)), 0);

    sim.setScenario(QStringLiteral("mains-return"));
    sim.advance(121);
    QCOMPARE(int(sim.measurement(9)), 230);
    QCOMPARE(int(sim.measurement(1)), 0);
    QVERIFY(qint16(sim.measurement(5)) > 0);
    const int capacity = sim.measurement(3);
    QVERIFY(capacity < 25);
    sim.advance(120);
    QVERIFY(sim.measurement(3) > capacity);
}

void TestSimScenarios::outputOffZeroesOutputValues()
{
    UpsSimulator sim(UpsSimulator::Profile::Three);
    const QList<int> outputIds = {25, 27, 28, 29, 30, 31, 32, 33, 35, 37, 39, 40, 41};
    sim.writeRegister(7, 0);
    for (int id : outputIds)
        QCOMPARE(int(sim.measurement(id)), 0);
    QCOMPARE(int(sim.measurement(9)), 230); // the mains are still there

    sim.writeRegister(5, 0xFFFF);
    for (int id : outputIds)
        QVERIFY2(sim.measurement(id) > 0, qPrintable(QString::number(id)));
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
    // The profile's image is a fresh simulator's: registers 0..72, alarms
    // 2000..2026 and identity blocks 4000..4006, as the client stores them.
    const QMap<int, QVariant> image = UpsSimulator::profileImage(profile);
    QCOMPARE(image, UpsSimulator(profile).dataPointImage());
    QCOMPARE(image.size(), 73 + 27 + 7);
    QCOMPARE(image.value(72).userType(), int(QMetaType::Int));
    QCOMPARE(image.value(4006).toByteArray().size(), 32);

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
    QVERIFY(qint16(sim.measurement(5)) < 0);
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

    QVERIFY(!sim.setScenario(QStringLiteral("flood")));
    QCOMPARE(sim.scenario(), QStringLiteral("normal"));

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
