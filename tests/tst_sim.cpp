// The simulated agent on the wire: unit ids, register writes and errors, the
// buzzer toggle, and the command-line tool. (The polling cycle's answers are
// decoded by the real client in the end-to-end tests.)
#include <QElapsedTimer>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>
#include <memory>

#include "upssimulator.h"

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

// Two of the client's read requests: identity texts at 0x0271, measurements at 0x0101.
const QByteArray ReadTexts = QByteArray::fromHex("000000000006010402710050");
const QByteArray ReadMeasurements = QByteArray::fromHex("000000000006010401010049");

} // namespace

class TestSim : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startOnAnyPortAndBusyPort();
    void registerWrites();
    void repeatedBuzzerWritesToggle();
    void outputOffZeroesOutputValues();
    void commandLineTool();

private:
    void startSimulator();
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

void TestSim::startSimulator()
{
    m_sim.reset(new UpsSimulator);
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

void TestSim::registerWrites()
{
    startSimulator();
    QSignalSpy spy(m_sim.get(), &UpsSimulator::registerWritten);
    const QDateTime before = QDateTime::currentDateTime();
    const QByteArray standby = frame(1, 0x06, 8, 900);
    QCOMPARE(ask(standby, 12), standby); // a write is answered with its echo
    QCOMPARE(m_sim->writes().size(), 1);
    const UpsSimulator::WriteRecord record = m_sim->writes().first();
    QCOMPARE(record.reg, 8);
    QCOMPARE(int(record.value), 900);
    QVERIFY(record.time >= before && record.time <= QDateTime::currentDateTime());
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.first().at(1).value<quint16>(), quint16(900));

    // Outside the command registers: illegal data address.
    QCOMPARE(ask(frame(1, 0x06, 9, 1), 9), QByteArray::fromHex("000000000003018602"));

    // Other unit ids (broadcast 0 included) get no answer and change nothing.
    for (quint8 unit : {0, 2}) {
        QVERIFY(exchange(*m_socket, frame(unit, 0x04, 0x0101, 0x49), 1, 200).isEmpty());
        QVERIFY(exchange(*m_socket, frame(unit, 0x06, 0x0003, 0xFFFF), 1, 200).isEmpty());
    }
    QCOMPARE(m_sim->writes().size(), 1);
    QVERIFY(m_sim->buzzerEnabled());
    // The connection still serves unit 1 afterwards, with nothing left over.
    const QByteArray answer = ask(ReadMeasurements, 9 + 0x92);
    QCOMPARE(answer.size(), 9 + 0x92);
    QCOMPARE(int(quint8(answer.at(6))), 1);
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
    const QByteArray measurements = exchange(*m_socket, ReadMeasurements, 9 + 0x92);
    QCOMPARE(measurements.size(), 9 + 0x92);
    QCOMPARE(registerAt(measurements, 8), quint16(3));
    const QByteArray texts = exchange(*m_socket, ReadTexts, 9 + 0xA0);
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
