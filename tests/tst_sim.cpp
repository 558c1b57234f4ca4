// The simulated agent on the wire: answers to the polling cycle, unit ids,
// register writes and the effects of the control commands.
#include <QElapsedTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>
#include <memory>

#include "upssimulator.h"

Q_DECLARE_METATYPE(UpsSimulator::Profile)

namespace {

constexpr int WaitMs = 5000;

quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

QByteArray frame(quint8 unit, quint8 function, quint16 first, quint16 second)
{
    QByteArray f = QByteArray::fromHex("000000000006");
    f.append(char(unit));
    f.append(char(function));
    f.append(char(first >> 8)).append(char(first & 0xFF));
    f.append(char(second >> 8)).append(char(second & 0xFF));
    return f;
}

bool connectTo(QTcpSocket &socket, quint16 port)
{
    socket.connectToHost(QHostAddress::LocalHost, port);
    QElapsedTimer timer;
    timer.start();
    while (socket.state() != QAbstractSocket::ConnectedState && timer.elapsed() < WaitMs)
        QTest::qWait(5);
    return socket.state() == QAbstractSocket::ConnectedState;
}

// Sends one request and collects what arrives until `expected` bytes are
// there or the wait ends; the server shares this thread's event loop.
QByteArray exchange(QTcpSocket &socket, const QByteArray &request, int expected, int waitMs = WaitMs)
{
    socket.write(request);
    QByteArray answer;
    QElapsedTimer timer;
    timer.start();
    while (answer.size() < expected && timer.elapsed() < waitMs) {
        QTest::qWait(5);
        answer.append(socket.readAll());
    }
    return answer;
}

quint16 registerAt(const QByteArray &answer, int n)
{
    return qFromBigEndian<quint16>(answer.constData() + 9 + 2 * n);
}

// Decodes one answer into data points the way the polling client does.
void decodeInto(QMap<int, QVariant> &points, const QByteArray &answer)
{
    const int count = quint8(answer.at(8));
    if (count == 0x92) {
        for (int n = 0; n < 73; ++n)
            points.insert(n, int(registerAt(answer, n)));
    } else if (count == 0xE0) {
        points.insert(4001, answer.mid(9, 32));
        points.insert(4000, answer.mid(41, 64));
        points.insert(4004, answer.mid(105, 64));
        points.insert(4003, answer.mid(169, 64));
    } else if (count == 0xA0) {
        points.insert(4005, answer.mid(9, 64));
        points.insert(4002, answer.mid(73, 64));
        points.insert(4006, answer.mid(137, 32));
    } else if (count == 0x09) {
        for (int i = 0; i < 27; ++i)
            points.insert(2000 + i, (quint8(answer.at(9 + i / 8)) >> (i % 8)) & 1);
    }
}

const QList<QByteArray> PollingCycle = {
    QByteArray::fromHex("000000000006010402010070"),
    QByteArray::fromHex("000000000006010402710050"),
    QByteArray::fromHex("000000000006010401010049"),
    QByteArray::fromHex("000000000006010201010041"),
};

} // namespace

class TestSim : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startOnAnyPortAndBusyPort();
    void answersToPollingCycle_data();
    void answersToPollingCycle();
    void servedImageMatchesDataPointImage_data();
    void servedImageMatchesDataPointImage();
    void otherUnitIdsIgnored_data();
    void otherUnitIdsIgnored();
    void writeSingleRegisterRecorded_data();
    void writeSingleRegisterRecorded();
    void repeatedBuzzerWritesToggle();
    void writeOutsideCommandRegistersRejected();
    void selfTestRaisesThenClearsAlarm23();
    void commandEffects_data();
    void commandEffects();
    void outputOffZeroesOutputValues();
    void dischargeTestRunsOnBattery();
    void commandLineTool();

private:
    void startSimulator(UpsSimulator::Profile profile = UpsSimulator::Profile::Single);
    QByteArray ask(const QByteArray &request, int expected);

    std::unique_ptr<UpsSimulator> m_sim;
    std::unique_ptr<QTcpSocket> m_socket;
};

void TestSim::init()
{
    m_sim.reset();
    m_socket.reset(new QTcpSocket);
}

void TestSim::cleanup()
{
    m_socket.reset();
    m_sim.reset();
}

void TestSim::startSimulator(UpsSimulator::Profile profile)
{
    m_sim.reset(new UpsSimulator(profile));
    QVERIFY(m_sim->start(QStringLiteral("127.0.0.1"), freePort()));
    QVERIFY(connectTo(*m_socket, m_sim->port()));
}

QByteArray TestSim::ask(const QByteArray &request, int expected)
{
    return exchange(*m_socket, request, expected);
}

void TestSim::startOnAnyPortAndBusyPort()
{
    UpsSimulator first;
    QVERIFY(first.start(QStringLiteral("127.0.0.1"), 0));
    QVERIFY(first.port() != 0);
    QVERIFY(connectTo(*m_socket, first.port()));

    UpsSimulator second;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("cannot listen")));
    QVERIFY(!second.start(QStringLiteral("127.0.0.1"), first.port()));
    QVERIFY(!second.isRunning());
}

void TestSim::answersToPollingCycle_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("function");
    QTest::addColumn<int>("byteCount");
    QTest::newRow("identity 0x0201") << 0 << 0x04 << 0xE0;
    QTest::newRow("identity 0x0271") << 1 << 0x04 << 0xA0;
    QTest::newRow("measurements 0x0101") << 2 << 0x04 << 0x92;
    QTest::newRow("alarms 0x0101") << 3 << 0x02 << 0x09;
}

void TestSim::answersToPollingCycle()
{
    QFETCH(int, index);
    QFETCH(int, function);
    QFETCH(int, byteCount);
    startSimulator();
    const QList<int> active = {0, 3, 9, 26, 30, 64};
    for (int number : active)
        m_sim->setAlarm(number, true);
    m_sim->setMeasurement(5, 0xFFFF);

    const QByteArray answer = ask(PollingCycle.at(index), 9 + byteCount);
    QCOMPARE(answer.size(), 9 + byteCount);
    QCOMPARE(answer.left(4), QByteArray(4, '\0'));  // transaction and protocol id
    QCOMPARE(int(qFromBigEndian<quint16>(answer.constData() + 4)), byteCount + 3);
    QCOMPARE(int(quint8(answer.at(6))), 1);
    QCOMPARE(int(quint8(answer.at(7))), function);
    QCOMPARE(int(quint8(answer.at(8))), byteCount);

    if (byteCount == 0x09) {
        for (int number = 0; number < 65; ++number) {
            const bool bit = (quint8(answer.at(9 + number / 8)) >> (number % 8)) & 1;
            QCOMPARE(bit, active.contains(number));
        }
    } else if (byteCount == 0x92) {
        QCOMPARE(registerAt(answer, 5), quint16(0xFFFF));
        for (int n = 0; n < 73; ++n)
            QCOMPARE(registerAt(answer, n), m_sim->measurement(n));
    } else {
        QMap<int, QVariant> points;
        decodeInto(points, answer);
        QCOMPARE(points.size(), byteCount == 0xE0 ? 4 : 3);
        for (auto it = points.cbegin(); it != points.cend(); ++it)
            QCOMPARE(it.value().toByteArray(), m_sim->identityText(it.key()));
    }
}

void TestSim::servedImageMatchesDataPointImage_data()
{
    QTest::addColumn<UpsSimulator::Profile>("profile");
    QTest::newRow("single") << UpsSimulator::Profile::Single;
    QTest::newRow("three") << UpsSimulator::Profile::Three;
}

void TestSim::servedImageMatchesDataPointImage()
{
    QFETCH(UpsSimulator::Profile, profile);
    startSimulator(profile);
    m_sim->setIdentityText(4002, "Rack 7 UPS");
    m_sim->setIdentityText(4006, QByteArray(40, 'L'));  // longer than its 32-byte block
    m_sim->setAlarm(23, true);

    QMap<int, QVariant> points;
    const int sizes[] = {9 + 0xE0, 9 + 0xA0, 9 + 0x92, 9 + 0x09};
    for (int i = 0; i < PollingCycle.size(); ++i) {
        const QByteArray answer = ask(PollingCycle.at(i), sizes[i]);
        QCOMPARE(answer.size(), sizes[i]);
        decodeInto(points, answer);
    }
    QCOMPARE(points, m_sim->dataPointImage());
    QCOMPARE(points.value(4002).toByteArray(), QByteArray("Rack 7 UPS") + QByteArray(54, '\0'));
    QCOMPARE(points.value(4006).toByteArray(), QByteArray(32, 'L'));
    QCOMPARE(points.value(2023).toInt(), 1);
}

void TestSim::otherUnitIdsIgnored_data()
{
    QTest::addColumn<int>("unit");
    QTest::newRow("broadcast 0") << 0;
    QTest::newRow("unit 2") << 2;
    QTest::newRow("unit 255") << 255;
}

void TestSim::otherUnitIdsIgnored()
{
    QFETCH(int, unit);
    startSimulator();
    const QByteArray ignored = exchange(*m_socket, frame(quint8(unit), 0x04, 0x0101, 0x49), 1, 200);
    QVERIFY(ignored.isEmpty());
    const QByteArray written = exchange(*m_socket, frame(quint8(unit), 0x06, 0x0003, 0xFFFF), 1, 200);
    QVERIFY(written.isEmpty());
    QVERIFY(m_sim->writes().isEmpty());
    QVERIFY(m_sim->buzzerEnabled());

    // The connection still serves unit 1 afterwards, with nothing left over.
    const QByteArray answer = ask(PollingCycle.at(2), 9 + 0x92);
    QCOMPARE(answer.size(), 9 + 0x92);
    QCOMPARE(int(quint8(answer.at(6))), 1);
}

void TestSim::writeSingleRegisterRecorded_data()
{
    QTest::addColumn<int>("reg");
    QTest::addColumn<int>("value");
    QTest::newRow("time set") << 0 << 0;
    QTest::newRow("self-test") << 1 << 0xFFFF;
    QTest::newRow("discharge 3 min") << 6 << 3;
    QTest::newRow("shutdown 12 s") << 7 << 12;
    QTest::newRow("standby 900 s") << 8 << 900;
}

void TestSim::writeSingleRegisterRecorded()
{
    QFETCH(int, reg);
    QFETCH(int, value);
    startSimulator();
    QSignalSpy spy(m_sim.get(), &UpsSimulator::registerWritten);
    const QDateTime before = QDateTime::currentDateTime();
    const QByteArray request = frame(1, 0x06, quint16(reg), quint16(value));
    const QByteArray answer = ask(request, 12);
    const QDateTime after = QDateTime::currentDateTime();

    QCOMPARE(answer, request);  // a write is answered with its echo
    QCOMPARE(m_sim->writes().size(), 1);
    const UpsSimulator::WriteRecord record = m_sim->writes().first();
    QCOMPARE(record.reg, reg);
    QCOMPARE(int(record.value), value);
    QVERIFY(record.time >= before && record.time <= after);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.first().at(0).toInt(), reg);
    QCOMPARE(spy.first().at(1).value<quint16>(), quint16(value));
}

void TestSim::repeatedBuzzerWritesToggle()
{
    startSimulator();
    const QByteArray readBuzzer = frame(1, 0x04, 0x0101 + 65, 1);
    QCOMPARE(registerAt(ask(readBuzzer, 11), 0), quint16(2));

    const QByteArray toggle = frame(1, 0x06, 3, 0xFFFF);
    QCOMPARE(ask(toggle, 12), toggle);
    QVERIFY(!m_sim->buzzerEnabled());
    QCOMPARE(registerAt(ask(readBuzzer, 11), 0), quint16(1));

    // The same value again is a new command, not a no-op.
    QCOMPARE(ask(toggle, 12), toggle);
    QVERIFY(m_sim->buzzerEnabled());
    QCOMPARE(registerAt(ask(readBuzzer, 11), 0), quint16(2));
    QCOMPARE(m_sim->writes().size(), 2);
}

void TestSim::writeOutsideCommandRegistersRejected()
{
    startSimulator();
    const QByteArray answer = ask(frame(1, 0x06, 9, 1), 9);
    QCOMPARE(answer, QByteArray::fromHex("000000000003018602"));  // illegal data address
    QVERIFY(m_sim->writes().isEmpty());
}

void TestSim::selfTestRaisesThenClearsAlarm23()
{
    startSimulator();
    m_sim->setTimeScale(20);
    const double startedAt = m_sim->scenarioTime();
    ask(frame(1, 0x06, 1, 0xFFFF), 12);
    QVERIFY(m_sim->alarm(23));
    const QByteArray bits = ask(PollingCycle.at(3), 18);
    QCOMPARE(bits.size(), 18);
    QVERIFY((quint8(bits.at(9 + 2)) >> 7) & 1);  // bit 23 served

    QTRY_VERIFY_WITH_TIMEOUT(!m_sim->alarm(23), 5000);
    QVERIFY(m_sim->scenarioTime() - startedAt >= 10.0);
    QVERIFY(!m_sim->alarm(19));  // passed
}

// Steps: "wR=V" writes value V to register R, "tS" advances S simulated seconds.
void TestSim::commandEffects_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QList<int>>("raised");
    QTest::addColumn<QList<int>>("clear");
    QTest::addColumn<int>("source");

    const QString trigger = QStringLiteral("=65535");
    auto row = [](const char *name, const QString &steps, QList<int> raised, QList<int> clear, int source,
                  const QString &scenario = QStringLiteral("normal")) {
        QTest::newRow(name) << scenario << steps.split(QLatin1Char(' ')) << raised << clear << source;
    };
    row("shutdown countdown", "w7=12 t6.5", {21}, {22, 14, 11}, 3);
    row("shutdown imminent", "w7=12 t7.5", {21, 22}, {14}, 3);
    row("shutdown done", "w7=12 t12.5", {14, 11}, {21, 22, 15}, 2);
    row("shutdown at once", "w7=0", {14, 11}, {21}, 2);
    row("shutdown cancelled", "w7=12 t3 w5" + trigger + " t20", {}, {21, 22, 14, 11}, 3);
    row("output restored", "w7=1 t2 w5" + trigger, {}, {14, 11}, 3);
    row("standby", "w8=60 t61", {14, 15, 11, 12}, {21}, 2);
    row("standby restored", "w8=60 t61 w5" + trigger, {}, {14, 15, 11, 12}, 3);
    row("self-test running", "w1" + trigger + " t5", {23}, {19, 26}, 3);
    row("self-test passed", "w1" + trigger + " t10.5", {}, {23, 19}, 3);
    row("self-test cancelled", "w1" + trigger + " t2 w4" + trigger, {}, {23}, 3);
    row("self-test value 0 ignored", "w1=0", {}, {23}, 3);
    row("self-test refused while off", "w7=0 w1" + trigger, {14}, {23}, 2);
    row("discharge to low", "w2" + trigger + " t60", {23, 26}, {2, 6}, 5);
    row("discharge cancelled", "w2" + trigger + " t60 w4" + trigger, {}, {23, 26}, 3);
    row("discharge ends at low battery", "w2" + trigger + " t4000", {}, {23, 26, 3}, 3);
    // mains back at 120 s with the battery well below 25 %
    row("self-test fails on low battery", "t121 w1" + trigger + " t11", {19}, {23, 3}, 3, "mains-return");
    row("timed discharge running", "w6=2 t119", {23, 26}, {}, 5);
    row("timed discharge over", "w6=2 t121", {}, {23, 26}, 3);
    row("time set recorded only", "w0=0 t1", {}, {14, 21, 23, 26}, 3);
}

void TestSim::commandEffects()
{
    QFETCH(QString, scenario);
    QFETCH(QStringList, steps);
    QFETCH(QList<int>, raised);
    QFETCH(QList<int>, clear);
    QFETCH(int, source);
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
    for (int number : raised)
        QVERIFY2(sim.alarm(number), qPrintable(QStringLiteral("alarm %1 not raised").arg(number)));
    for (int number : clear)
        QVERIFY2(!sim.alarm(number), qPrintable(QStringLiteral("alarm %1 raised").arg(number)));
    QCOMPARE(int(sim.measurement(24)), source);
}

void TestSim::outputOffZeroesOutputValues()
{
    UpsSimulator sim(UpsSimulator::Profile::Three);
    const QList<int> outputIds = {25, 27, 28, 29, 30, 31, 32, 33, 35, 37, 39, 40, 41};
    sim.writeRegister(7, 0);
    for (int id : outputIds)
        QCOMPARE(int(sim.measurement(id)), 0);
    QCOMPARE(int(sim.measurement(9)), 230);  // the mains are still there

    sim.writeRegister(5, 0xFFFF);
    for (int id : outputIds)
        QVERIFY2(sim.measurement(id) > 0, qPrintable(QString::number(id)));
}

void TestSim::dischargeTestRunsOnBattery()
{
    UpsSimulator sim;
    const int remainingBefore = sim.measurement(2);
    sim.writeRegister(2, 0xFFFF);
    sim.advance(120);
    QVERIFY(qint16(sim.measurement(5)) < 0);  // two's complement, discharging
    QVERIFY(sim.measurement(3) < 100);
    QVERIFY(sim.measurement(2) < remainingBefore);
    QCOMPARE(int(sim.measurement(1)), 120);
    QCOMPARE(int(sim.measurement(9)), 230);

    // The test stops at low battery (25 %) and the charger takes over.
    sim.advance(4000);
    QVERIFY(!sim.alarm(26));
    QCOMPARE(int(sim.measurement(24)), 3);
    QVERIFY(sim.measurement(3) >= 25 && sim.measurement(3) < 50);
    QVERIFY(qint16(sim.measurement(5)) > 0);
    QCOMPARE(int(sim.measurement(1)), 0);
}

void TestSim::commandLineTool()
{
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/orvek-sim");
    if (!QFileInfo::exists(program))
        QSKIP("orvek-sim is not built");

    QProcess bad;
    bad.start(program, {QStringLiteral("--scenario"), QStringLiteral("no-such-story")});
    QVERIFY(bad.waitForFinished(WaitMs));
    QVERIFY(bad.exitCode() != 0);
    QVERIFY(bad.readAllStandardError().contains("mains-failure"));

    QProcess tool;
    const quint16 port = freePort();
    tool.start(program, {QStringLiteral("--port"), QString::number(port), QStringLiteral("--profile"),
                         QStringLiteral("three"), QStringLiteral("--name"), QStringLiteral("Lab UPS")});
    QVERIFY(tool.waitForStarted(WaitMs));
    // Output accumulates: the macro evaluates its condition once more at the end.
    QByteArray log;
    QTRY_VERIFY_WITH_TIMEOUT((log += tool.readAllStandardOutput()).contains("listening"), WaitMs);

    QVERIFY(connectTo(*m_socket, port));
    QCOMPARE(exchange(*m_socket, frame(1, 0x06, 7, 30), 12), frame(1, 0x06, 7, 30));
    const QByteArray measurements = exchange(*m_socket, PollingCycle.at(2), 9 + 0x92);
    QCOMPARE(measurements.size(), 9 + 0x92);
    QCOMPARE(registerAt(measurements, 8), quint16(3));
    const QByteArray texts = exchange(*m_socket, PollingCycle.at(1), 9 + 0xA0);
    QVERIFY(texts.mid(73, 64).startsWith("Lab UPS\0"));

    QTRY_VERIFY_WITH_TIMEOUT((log += tool.readAllStandardOutput()).contains("alarm 21 raised"), WaitMs);
    QVERIFY(log.contains("write register 7 value 30"));

    tool.terminate();  // SIGTERM ends it cleanly
    QVERIFY(tool.waitForFinished(WaitMs));
    QCOMPARE(tool.exitStatus(), QProcess::NormalExit);
    QCOMPARE(tool.exitCode(), 0);
}

QTEST_MAIN(TestSim)
#include "tst_sim.moc"
