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
    void phaseCounts_data();
    void phaseCounts();
    void pinnedMeasurementsAndForcedAlarms();
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

    // The control commands' effects; 65535 is the trigger value.
    row("shutdown countdown", "normal", "w7=12 t6.5", 3, {21}, {22, 14, 11});
    row("shutdown done", "normal", "w7=12 t12.5", 2, {14, 11}, {21, 22, 15});
    row("shutdown cancelled", "normal", "w7=12 t3 w5=65535 t20", 3, {}, {21, 22, 14, 11});
    row("standby", "normal", "w8=60 t61", 2, {14, 15, 11, 12}, {21});
    row("self-test passed", "normal", "w1=65535 t10.5", 3, {}, {23, 19});
    row("self-test value 0 ignored", "normal", "w1=0", 3, {}, {23});
    row("self-test refused while off", "normal", "w7=0 w1=65535", 2, {14}, {23});
    row("discharge to low", "normal", "w2=65535 t60", 5, {23, 26}, {2, 6});
    // mains back at 120 s with the battery well below 25 %
    row("self-test fails on low battery", "mains-return", "t121 w1=65535 t11", 3, {19}, {23, 3});
    row("timed discharge over", "normal", "w6=2 t121", 3, {}, {23, 26}); // 2 minutes
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

    UpsSimulator sim(profile);
    sim.setScenario(QStringLiteral("bypass"));
    sim.advance(10);  // bypass carries current too
    for (int id : {8, 26, 43})
        QCOMPARE(int(sim.measurement(id)), phases);

    // Input, output and bypass voltages and the 32-bit output powers: only
    // the phases in use carry values.
    const int perPhase[][3] = {{9, 10, 11}, {27, 28, 29}, {44, 45, 46}, {33, 35, 37}};
    for (const auto &ids : perPhase) {
        for (int p = 0; p < 3; ++p)
            QVERIFY2((sim.measurement(ids[p]) > 0) == (p < phases), qPrintable(QString::number(ids[p])));
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
    QVERIFY(sim.setScenario(QStringLiteral("normal"))); // a new scenario clears forced alarms
    QVERIFY(!sim.alarm(3));
    QVERIFY(!sim.setScenario(QStringLiteral("flood")));
    QCOMPARE(sim.scenario(), QStringLiteral("normal"));
}

QTEST_MAIN(TestSimScenarios)
#include "tst_sim_scenarios.moc"
