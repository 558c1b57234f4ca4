// The simulated agent on the wire: register writes and errors, other unit ids,
// the buzzer toggle, and the command-line tool. (The polling cycle's answers
// are decoded by the real client in the end-to-end tests.)
#include <QProcess>
#include <QTcpSocket>
#include <QtEndian>
#include <QtTest>

#include "testconfig.h"
#include "upssimulator.h"

namespace {

constexpr int kWaitMs = 5000;

// The client's read request for the measurements at 0x0101.
const QByteArray kReadMeasurements = QByteArray::fromHex("000000000006010401010049");

QByteArray frame(quint8 unit, quint8 function, quint16 first, quint16 second)
{
    QByteArray f = QByteArray::fromHex("000000000006");
    f.append(char(unit)).append(char(function));
    f.append(char(first >> 8)).append(char(first & 0xFF));
    f.append(char(second >> 8)).append(char(second & 0xFF));
    return f;
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
    const auto complete = [&] {
        answer += socket.readAll();
        return answer.size() >= expected;
    };
    if (!QTest::qWaitFor(complete, waitMs))
        answer += socket.readAll(); // whatever came at the last moment
    return answer;
}

quint16 registerAt(const QByteArray &answer, int n)
{
    return qFromBigEndian<quint16>(answer.constData() + 9 + 2 * n);
}

} // namespace

class TestSim : public QObject
{
    Q_OBJECT

private slots:
    void registerWrites();
    void commandLineTool();
};

void TestSim::registerWrites()
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
    // shows 2 (enabled) or 1. The answers come whole, nothing left over.
    for (quint16 state : {1, 2}) {
        QCOMPARE(exchange(socket, frame(1, 0x06, 3, 0xFFFF), 12).size(), 12);
        QCOMPARE(sim.buzzerEnabled(), state == 2);
        const QByteArray answer = exchange(socket, kReadMeasurements, 9 + 0x92);
        QCOMPARE(answer.size(), 9 + 0x92);
        QCOMPARE(registerAt(answer, 65), state);
    }
}

void TestSim::commandLineTool()
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
    const QByteArray measurements = exchange(socket, kReadMeasurements, 9 + 0x92);
    QCOMPARE(measurements.size(), 9 + 0x92);
    QCOMPARE(registerAt(measurements, 8), quint16(3)); // three phases
    QTRY_VERIFY_WITH_TIMEOUT((log += tool.readAllStandardOutput()).contains("write register 7 value 30"), kWaitMs);

    tool.terminate(); // SIGTERM ends it cleanly
    QVERIFY(tool.waitForFinished(kWaitMs));
    QCOMPARE(tool.exitStatus(), QProcess::NormalExit);
    QCOMPARE(tool.exitCode(), 0);
}

QTEST_MAIN(TestSim)
#include "tst_sim.moc"
