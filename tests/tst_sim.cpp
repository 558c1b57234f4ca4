// The simulated agent: scenarios, command effects, profiles and data point image; on the wire its
// register writes and errors, other unit ids, the buzzer toggle, and the command-line tool. (The
// polling cycle's answers are decoded by the real client in the end-to-end tests.)
#include <QProcess>
#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>

#include "testconfig.h"
#include "upssimulator.h"

namespace {

constexpr int kWaitMs = 5000;

QByteArray frame(quint8 unit, quint8 function, quint16 first, quint16 second)
{
    return QByteArray::fromHex(
        QString::asprintf("000000000006%02x%02x%04x%04x", unit, function, first, second).toLatin1());
}

// The server shares this thread's event loop: every wait spins it.
bool connectTo(QTcpSocket &socket, quint16 port)
{
    socket.connectToHost(QHostAddress::LocalHost, port);
    return QTest::qWaitFor([&socket] { return socket.state() == QAbstractSocket::ConnectedState; }, kWaitMs);
}

// Sends one request and collects what arrives until `expected` bytes are
// there or the wait ends.
QByteArray exchange(QTcpSocket &socket, const QByteArray &request, int expected, int waitMs = kWaitMs)
{
    socket.write(request);
    QByteArray answer;
    if (!QTest::qWaitFor([&] { return (answer += socket.readAll()).size() >= expected; }, waitMs))
        answer += socket.readAll(); // whatever came at the last moment
    return answer;
}

// Register n of the measurements at 0x0101, read as the client reads them;
// -1 unless the answer came whole with nothing left over.
int measurementRegister(QTcpSocket &socket, int n)
{
    const QByteArray answer = exchange(socket, frame(1, 0x04, 0x0101, 0x49), 9 + 0x92);
    return answer.size() == 9 + 0x92 ? qFromBigEndian<quint16>(answer.constData() + 9 + 2 * n) : -1;
}

} // namespace

class TestSim : public QObject
{
    Q_OBJECT

private slots:
    // Steps: "wR=V" writes value V to register R, "tS" advances S simulated seconds.
    // Alarms: "+N" is raised, "-N" clear at the end.
    void stories_data()
    {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<int>("source");
        QTest::addColumn<QStringList>("alarms");
        auto row = [](const char *name, const char *scenario, const char *steps, int source, const char *alarms) {
            QTest::newRow(name) << QString(scenario) << QString(steps).split(' ') << source
                                << QString(alarms).split(' ', Qt::SkipEmptyParts);
        };
        row("normal stays online", "normal", "t600", 3, "-2 -3 -6 -9 -14");
        row("mains-failure before", "mains-failure", "t4.5", 3, "-2 -6");
        row("mains-failure on battery", "mains-failure", "t6", 5, "+2 +6 -3");
        row("mains-failure battery low", "mains-failure", "t110", 5, "+2 +3 +6 -4 -14");
        row("mains-failure exhausted", "mains-failure", "t200", 2, "+4 +6 +14 -2 -3");
        row("mains-return back", "mains-return", "t121", 3, "-2 -3 -4 -6");
        row("bypass", "bypass", "t6", 4, "+9 -2 -6");
        row("alarm-flips repeats", "alarm-flips", "t36", 3, "+5 -8 -16");
        row("demo on battery", "demo", "t20", 5, "+2 -3");

        // The control commands' effects; 65535 is the trigger value.
        row("shutdown countdown", "normal", "w7=12 t6.5", 3, "+21 -22 -14 -11");
        row("shutdown done", "normal", "w7=12 t12.5", 2, "+14 +11 -21 -22 -15");
        row("shutdown cancelled", "normal", "w7=12 t3 w5=65535 t20", 3, "-21 -22 -14 -11");
        row("standby", "normal", "w8=60 t61", 2, "+14 +15 +11 +12 -21");
        row("self-test passed", "normal", "w1=65535 t10.5", 3, "-23 -19");
        row("self-test value 0 ignored", "normal", "w1=0", 3, "-23");
        row("self-test refused while off", "normal", "w7=0 w1=65535", 2, "+14 -23");
        row("discharge to low", "normal", "w2=65535 t60", 5, "+23 +26 -2 -6");
        // mains back at 120 s with the battery well below 25 %
        row("self-test fails on low battery", "mains-return", "t121 w1=65535 t11", 3, "+19 -23 -3");
        row("timed discharge over", "normal", "w6=2 t121", 3, "-23 -26"); // 2 minutes
    }

    void stories()
    {
        QFETCH(QString, scenario);
        QFETCH(QStringList, steps);
        QFETCH(QStringList, alarms);

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
        for (const QString &alarm : alarms)
            QVERIFY2(sim.alarm(alarm.mid(1).toInt()) == alarm.startsWith('+'), qPrintable("alarm " + alarm));

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

    void phaseCounts()
    {
        for (const auto profile : {UpsSimulator::Profile::Single, UpsSimulator::Profile::Three}) {
            const int phases = profile == UpsSimulator::Profile::Three ? 3 : 1;
            // The profile's image is a fresh simulator's: registers 0..72, alarms
            // 2000..2026 and identity blocks 4000..4006, as the client stores them.
            const QMap<int, QVariant> image = UpsSimulator::profileImage(profile);
            QCOMPARE(image, UpsSimulator(profile).dataPointImage());
            QCOMPARE(image.size(), 73 + 27 + 7);

            UpsSimulator sim(profile);
            sim.setScenario(QStringLiteral("bypass"));
            sim.advance(10); // bypass carries current too
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
    }

    void pinnedMeasurementsAndForcedAlarms()
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

    void registerWrites()
    {
        UpsSimulator sim;
        QVERIFY(sim.start(QStringLiteral("127.0.0.1"), 0));
        QTcpSocket socket;
        QVERIFY(connectTo(socket, sim.port()));
        const QDateTime before = QDateTime::currentDateTime();
        const QByteArray standby = frame(1, 0x06, 8, 900);
        QCOMPARE(exchange(socket, standby, 12), standby); // a write is answered with its echo
        QCOMPARE(sim.writes().size(), 1);
        const UpsSimulator::WriteRecord record = sim.writes().first();
        QCOMPARE(record.reg, 8);
        QCOMPARE(int(record.value), 900);
        QVERIFY(record.time >= before && record.time <= QDateTime::currentDateTime());

        // Outside the command registers: illegal data address.
        QCOMPARE(exchange(socket, frame(1, 0x06, 9, 1), 9), QByteArray::fromHex("000000000003018602"));

        // Other unit ids (broadcast 0 included) get no answer and change nothing
        // (an odd number of buzzer writes, so that a wrongly applied one shows below).
        for (quint8 unit : {0, 2, 7}) {
            QVERIFY(exchange(socket, frame(unit, 0x04, 0x0101, 0x49), 1, 200).isEmpty());
            QVERIFY(exchange(socket, frame(unit, 0x06, 0x0003, 0xFFFF), 1, 200).isEmpty());
        }
        QCOMPARE(sim.writes().size(), 1);

        // Every buzzer write toggles it, whatever the value; measurement 65
        // shows 2 (enabled) or 1.
        for (int state : {1, 2}) {
            QCOMPARE(exchange(socket, frame(1, 0x06, 3, 0xFFFF), 12).size(), 12);
            QCOMPARE(sim.buzzerEnabled(), state == 2);
            QCOMPARE(measurementRegister(socket, 65), state);
        }
    }

    void commandLineTool()
    {
        const QString program = builtBinaryDir() + QStringLiteral("/orvek-sim");
        if (!QFileInfo::exists(program))
            QSKIP("orvek-sim is not built");

        QProcess tool;
        const quint16 port = closedLocalPort();
        tool.start(program, {QStringLiteral("--port"), QString::number(port), QStringLiteral("--profile"),
                             QStringLiteral("three")});
        QVERIFY(tool.waitForStarted(kWaitMs));
        // Output accumulates: the macro evaluates its condition once more at the end.
        QByteArray log;
        QTRY_VERIFY_WITH_TIMEOUT((log += tool.readAllStandardOutput()).contains("listening"), kWaitMs);

        QTcpSocket socket;
        QVERIFY(connectTo(socket, port));
        QCOMPARE(exchange(socket, frame(1, 0x06, 7, 30), 12), frame(1, 0x06, 7, 30));
        QCOMPARE(measurementRegister(socket, 8), 3); // three phases
        QTRY_VERIFY_WITH_TIMEOUT((log += tool.readAllStandardOutput()).contains("write register 7 value 30"), kWaitMs);

        tool.terminate(); // SIGTERM ends it cleanly
        QVERIFY(tool.waitForFinished(kWaitMs));
        QCOMPARE(tool.exitStatus(), QProcess::NormalExit);
        QCOMPARE(tool.exitCode(), 0);
    }
};

QTEST_MAIN(TestSim)
#include "tst_sim.moc"
