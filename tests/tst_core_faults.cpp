// The client against a misbehaving agent: split, malformed, late, oversize and
// dripping answers, stalls, dropped connections and restarts. After a warm-up
// each row scripts what the agent does with the next request (the measurement
// block) or takes the agent down, then ticks the client as the host does and
// checks every tick: its duration, the lost/restored reports and the values
// published, until well-formed answers are decoded again.
#include <QtTest>

#include "eventrecorder.h"
#include "fakeagent.h"
#include "orvekclient.h"

namespace {

using Plan = FakeAgent::Plan;
using Step = FakeAgent::Step;

constexpr int kRetries = 2;
constexpr int kReconnectPauseMs = 0;
constexpr int kConnectWaitMs = 1500;
constexpr int kAnswerWaitMs = 1000; // interval 1
constexpr int kSlackMs = 2000;
constexpr int kRotation = 4;
constexpr int kMeasurementIndex = 2; // rotation position of the block 0x0101
constexpr int kRegisters = 73;
constexpr int kReadChunk = 1024; // the client's socket read buffer: one read per tick
constexpr int kLongestAnswer = 9 + 224;
constexpr int kJunkBytes = 40 * 1024;
constexpr int kTruncatedAt = 60;
constexpr int kResetAfter = 100;

// Ticks until a backlog of this many bytes is worked off: each tick reads a
// full buffer while the agent adds at most one answer, and one more read
// leaves the stream at an answer boundary.
constexpr int drainTicks(int bytes)
{
    return (bytes + kReadChunk - kLongestAnswer - 1) / (kReadChunk - kLongestAnswer) + 1;
}

// No data byte of these answers is one of the four byte counts (0x09, 0x92,
// 0xA0, 0xE0), so a read that starts inside an answer never passes for one.
QByteArray measurementAnswer(quint8 highByte)
{
    QByteArray data;
    for (int n = 0; n < kRegisters; ++n)
        data.append(char(highByte)).append(char(2 * n)); // even, at most 0x90
    return FakeAgent::answer(0x04, data);
}
QByteArray goodMeasurements() { return measurementAnswer(0x31); }
// Distinct values, so that the test can tell whether a malformed answer was published.
QByteArray foreignMeasurements() { return measurementAnswer(0x71); }

QByteArray goodAlarms() { return FakeAgent::alarmAnswer(FakeAgent::alarmBits({1})); }

QByteArray goodReply(const QByteArray &request)
{
    const int start = (quint8(request.at(8)) << 8) | quint8(request.at(9));
    const int quantity = (quint8(request.at(10)) << 8) | quint8(request.at(11));
    if (quint8(request.at(7)) == 0x02)
        return goodAlarms();
    if (start == 0x0101)
        return goodMeasurements();
    QByteArray text;
    while (text.size() < 2 * quantity)
        text += "ORVEK UPS 3000 ";
    return FakeAgent::answer(0x04, text.left(2 * quantity));
}

Plan goodPlan(const QByteArray &request) { return {Step::send(goodReply(request))}; }

// The first `times` requests get `plan`, every later one its regular answer.
FakeAgent::Script faultThenGood(const Plan &plan, int times = 1)
{
    return [plan, times](const QByteArray &request, int ordinal) {
        return ordinal < times ? plan : goodPlan(request);
    };
}

QByteArray patched(QByteArray answer, int at, const QByteArray &bytes)
{
    return answer.replace(at, bytes.size(), bytes);
}

// A measurement answer followed by filler up to `total` bytes, MBAP length to match.
QByteArray oversize(int total)
{
    QByteArray a = foreignMeasurements() + QByteArray(total - foreignMeasurements().size(), 'Z');
    const int length = total - 6;
    return patched(a, 4, QByteArray(1, char(length >> 8)) + char(length & 0xFF));
}

// Register values as the answer's bytes give them; bytes missing read as zero.
QList<int> registersOf(const QByteArray &answer)
{
    QList<int> regs;
    for (int n = 0; n < kRegisters; ++n) {
        const QByteArray pair = answer.mid(9 + 2 * n, 2).leftJustified(2, '\0');
        regs << ((quint8(pair.at(0)) << 8) | quint8(pair.at(1)));
    }
    return regs;
}

// Ids 0..72 as the client publishes them; -1 where none was decoded yet.
QList<int> publishedRegisters(const OrvekClient &client)
{
    QList<int> regs;
    for (int n = 0; n < kRegisters; ++n)
        regs << client.dataPoints.value(n, -1).toInt();
    return regs;
}

// Identity texts and alarm states after one regular answer to each request.
DataPointMap referencePoints()
{
    OrvekClient c;
    for (int i = 0; i < kRotation; ++i)
        c.decodeAnswer(goodReply(OrvekClient::readRequest(i)));
    return c.dataPoints;
}

// The first identity or alarm data point that differs from the regular ones, or -1.
int strayPoint(const DataPointMap &points, const DataPointMap &reference)
{
    for (auto it = points.constBegin(); it != points.constEnd(); ++it) {
        if (it.key() >= 2000 && it.key() != 4014 && it.value() != reference.value(it.key()))
            return it.key();
    }
    return -1;
}

int goodDecodes(const EventRecorder &rec)
{
    const QByteArray data = goodMeasurements().mid(9);
    int n = 0;
    for (const auto &e : rec.ofType(2007))
        n += e.second.value("raw_data").toByteArray() == data ? 1 : 0;
    return n;
}

void tick(OrvekClient &client)
{
    client.nextPollTime = 0;
    client.poll();
}

enum Fault {
    NoFault,
    SplitAnswer,
    TwoAnswersInOneSegment,
    ShortAnswer,
    TruncatedAnswer,
    ExceptionAnswer,
    CountDisagreesWithLength,
    LengthBeyondData,
    WrongTransactionId,
    WrongUnitId,
    WrongFunction,
    ZeroLength,
    GarbageBytes,
    Oversize600,
    Oversize3000,
    JunkBurst,
    DripFeed,
    NeverAnswers,
    FreezeMidRotation,
    CloseAfterAccept,
    ResetMidAnswer,
    LateAnswer,
};

// Sets the agent up for the row; the next request it receives is the
// measurement request unless the fault drops the connection first.
void arm(FakeAgent &agent, Fault fault)
{
    const QByteArray foreign = foreignMeasurements();
    Plan plan;
    int times = 1;
    switch (fault) {
    case NoFault:
        return;
    case SplitAnswer:
        plan = {Step::send(foreign.left(9)), Step::wait(500), Step::send(foreign.mid(9))};
        break;
    case TwoAnswersInOneSegment:
        plan = {Step::send(goodMeasurements() + FakeAgent::alarmAnswer(FakeAgent::alarmBits({1, 5})))};
        break;
    case ShortAnswer:
        plan = {Step::send(foreign.left(13))};
        break;
    case TruncatedAnswer:
        plan = {Step::send(foreign.left(kTruncatedAt))};
        break;
    case ExceptionAnswer:
        plan = {Step::send(QByteArray::fromHex("000000000003018402"))};
        break;
    case CountDisagreesWithLength:
        plan = {Step::send(patched(foreign, 4, QByteArray::fromHex("0006")))};
        break;
    case LengthBeyondData:
        plan = {Step::send(patched(foreign, 4, QByteArray::fromHex("0400")))};
        break;
    case WrongTransactionId:
        plan = {Step::send(patched(foreign, 0, QByteArray::fromHex("1234")))};
        break;
    case WrongUnitId:
        plan = {Step::send(patched(foreign, 6, QByteArray::fromHex("07")))};
        break;
    case WrongFunction:
        plan = {Step::send(patched(foreign, 7, QByteArray::fromHex("03")))};
        break;
    case ZeroLength:
        plan = {Step::send(QByteArray::fromHex("00000000000001"))}; // MBAP header, length 0
        break;
    case GarbageBytes:
        plan = {Step::send("garbage on the line, not a Modbus frame")};
        break;
    case Oversize600:
        plan = {Step::send(oversize(600))};
        break;
    case Oversize3000:
        plan = {Step::send(oversize(3000))};
        break;
    case JunkBurst:
        plan = {Step::send(QByteArray(kJunkBytes, 'Z'))};
        break;
    case DripFeed:
        plan = FakeAgent::drip(goodAlarms(), 50);
        break;
    case NeverAnswers:
        agent.dropConnections(); // the client reconnects to an agent that keeps silent
        times = 3;
        break;
    case FreezeMidRotation:
        plan = {Step::wait(2500), Step::send(goodMeasurements())};
        break;
    case CloseAfterAccept:
        agent.dropConnections();
        agent.closeNextConnections(3);
        return;
    case ResetMidAnswer:
        plan = {Step::send(foreign.left(kResetAfter)), Step::wait(300), Step::reset()};
        break;
    case LateAnswer:
        plan = {Step::wait(kAnswerWaitMs + 300), Step::send(foreign)};
        break;
    }
    agent.setScript(faultThenGood(plan, times));
}

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void faultMatrix_data();
    void faultMatrix();
};

void TestFaults::faultMatrix_data()
{
    QTest::addColumn<int>("fault");
    QTest::addColumn<bool>("warmUp");
    // downTicks: the agent is stopped when armed and listens again after that many ticks; -1: it stays up.
    // lost, restored: 1041 and 1040 reports after arming.
    // faultTicks: ticks the fault may last; well-formed answers are decoded again within two rotations more.
    // published: measurement values published from the malformed answer; empty: none.
    QTest::addColumn<int>("downTicks");
    QTest::addColumn<int>("lost");
    QTest::addColumn<int>("restored");
    QTest::addColumn<int>("faultTicks");
    QTest::addColumn<QList<int>>("published");

    const QList<int> none;
    const QList<int> foreign = registersOf(foreignMeasurements());

    // The 9-byte header arrives alone and is dropped (under 14 bytes). The body
    // is read on its own and taken by its byte 8, here the high byte of
    // register 4 (0x71): an unknown count, so none of its values are published.
    QTest::newRow("split answer") << int(SplitAnswer) << true << -1 << 0 << 0 << 2 << none;
    // Only the first answer of a read is decoded: the measurements are, the
    // discrete inputs behind them (alarm 5 raised) are not.
    QTest::newRow("two answers in one segment") << int(TwoAnswersInOneSegment) << true << -1 << 0 << 0 << 0 << none;
    QTest::newRow("short answer") << int(ShortAnswer) << true << -1 << 0 << 0 << 1 << none;
    // Decoded by its byte count from what arrived: the missing registers read as zero.
    QTest::newRow("truncated answer") << int(TruncatedAnswer) << true << -1 << 0 << 0 << 1
                                      << registersOf(foreignMeasurements().left(kTruncatedAt));
    QTest::newRow("exception answer") << int(ExceptionAnswer) << true << -1 << 0 << 0 << 1 << none;
    // The MBAP header, unit id and function code are not inspected and
    // answers are not matched to requests: the byte count alone selects the
    // decoder, so these are decoded and published as usual.
    QTest::newRow("byte count vs MBAP length") << int(CountDisagreesWithLength) << true << -1 << 0 << 0 << 1 << foreign;
    QTest::newRow("MBAP length beyond data") << int(LengthBeyondData) << true << -1 << 0 << 0 << 1 << foreign;
    QTest::newRow("wrong transaction id") << int(WrongTransactionId) << true << -1 << 0 << 0 << 1 << foreign;
    QTest::newRow("wrong unit id") << int(WrongUnitId) << true << -1 << 0 << 0 << 1 << foreign;
    QTest::newRow("wrong function code") << int(WrongFunction) << true << -1 << 0 << 0 << 1 << foreign;
    // An MBAP header with length 0 and nothing behind it: dropped.
    QTest::newRow("zero length") << int(ZeroLength) << true << -1 << 0 << 0 << 1 << none;
    // 14 bytes or more: contact with an unknown byte count, nothing decoded.
    QTest::newRow("garbage bytes") << int(GarbageBytes) << true << -1 << 0 << 0 << 1 << none;
    // The leading answer is decoded by its count, the filler behind it in the same read dropped.
    QTest::newRow("oversize 600") << int(Oversize600) << true << -1 << 0 << 0 << 1 << foreign;
    // The first 1 KB read is decoded as above; the rest of the filler takes
    // further reads that count as contact only.
    QTest::newRow("oversize 3000") << int(Oversize3000) << true << -1 << 0 << 0 << 1 + drainTicks(3000 - kReadChunk)
                                   << foreign;
    // 'Z' filler: one 1 KB read a tick, each contact with an unknown byte
    // count; no read of it can pass for an answer.
    QTest::newRow("40 KB junk burst") << int(JunkBurst) << true << -1 << 0 << 0 << drainTicks(kJunkBytes) << none;
    // Every tick takes the byte that has arrived and drops it; the answers
    // queued behind the drip then come as one burst.
    QTest::newRow("drip feed") << int(DripFeed) << true << -1 << 0 << 0
                               << goodAlarms().size() + drainTicks(goodAlarms().size() * kLongestAnswer) << none;
    // Unanswered requests are no failed connection attempts: not lost.
    QTest::newRow("accepts, never answers") << int(NeverAnswers) << true << -1 << 0 << 0 << 5 << none;
    QTest::newRow("freeze mid-rotation") << int(FreezeMidRotation) << true << -1 << 0 << 0 << 3 << none;
    // Each accepted connection counts as an attempt without an answer.
    QTest::newRow("close right after accept") << int(CloseAfterAccept) << true << -1 << 1 << 1 << 8 << none;
    // The part that arrived is decoded by its byte count, zero-filled.
    QTest::newRow("reset mid-answer") << int(ResetMidAnswer) << true << -1 << 0 << 0 << 3
                                      << registersOf(foreignMeasurements().left(kResetAfter));
    // Nothing listens from the start: lost once after two refusals however
    // many follow, restored by the first answer once the agent is up.
    QTest::newRow("refused port") << int(NoFault) << false << 3 << 1 << 1 << 4 << none;
    // Arrives in the next request's wait and is decoded there by its own byte count.
    QTest::newRow("late answer") << int(LateAnswer) << true << -1 << 0 << 0 << 2 << foreign;
    // The dead connection costs a tick and the reconnect one attempt, fewer than retries.
    QTest::newRow("agent restart, quick") << int(NoFault) << true << 0 << 0 << 0 << 2 << none;
    // Down for four ticks: the dead connection, then refused attempts.
    QTest::newRow("agent restart, lost") << int(NoFault) << true << 4 << 1 << 1 << 5 << none;
}

void TestFaults::faultMatrix()
{
    QFETCH(int, fault);
    QFETCH(bool, warmUp);
    QFETCH(int, downTicks);
    QFETCH(int, lost);
    QFETCH(int, restored);
    QFETCH(int, faultTicks);
    QFETCH(QList<int>, published);

    FakeAgent agent;
    agent.setScript([](const QByteArray &request, int) { return goodPlan(request); });
    const quint16 port = agent.start();
    QVERIFY(port != 0);
    OrvekClient client;
    client.name = QStringLiteral("fault-ups");
    client.setTarget(QStringLiteral("127.0.0.1"), port);
    client.retries = kRetries;
    client.interval = 1;
    client.setConnectTimings(kReconnectPauseMs, kConnectWaitMs);
    EventRecorder rec(&client);

    if (warmUp) {
        // Connect and run a rotation, up to where the measurement request is next.
        for (int i = 0; i < 3 * kRotation && !(goodDecodes(rec) > 0 && client.requestIndex == kMeasurementIndex); ++i)
            tick(client);
        QVERIFY(goodDecodes(rec) > 0);
        QCOMPARE(client.requestIndex, kMeasurementIndex);
        rec.clear();
    }
    if (downTicks >= 0)
        agent.stop();
    arm(agent, Fault(fault));

    const QList<int> good = registersOf(goodMeasurements());
    const QList<int> undecoded = QVector<int>(kRegisters, -1).toList();
    const DataPointMap reference = referencePoints();
    const int recoveryBound = faultTicks + 2 * kRotation;
    int recoveredAt = 0;
    bool malformedSeen = false;
    // Until a rotation past the recovery, to see that nothing more is reported.
    for (int t = 1; t <= recoveryBound + kRotation && (recoveredAt == 0 || t <= recoveredAt + kRotation); ++t) {
        if (t == downTicks + 1)
            QCOMPARE(agent.start(port), port);
        const bool connected = client.socket && client.socket->state() == QAbstractSocket::ConnectedState;
        const int decodedBefore = goodDecodes(rec);
        QElapsedTimer timer;
        timer.start();
        tick(client);
        const qint64 ms = timer.elapsed();
        const int limit = (connected ? kAnswerWaitMs : kReconnectPauseMs + kConnectWaitMs) + kSlackMs;
        QVERIFY2(ms <= limit, qPrintable(QStringLiteral("tick %1 took %2 ms").arg(t).arg(ms)));

        const QList<int> regs = publishedRegisters(client);
        const bool malformed = !published.isEmpty() && regs == published;
        malformedSeen = malformedSeen || malformed;
        QVERIFY2(regs == good || regs == undecoded || malformed,
                 qPrintable(QStringLiteral("tick %1 published unexpected measurements").arg(t)));
        const int stray = strayPoint(client.dataPoints, reference);
        QVERIFY2(stray < 0, qPrintable(QStringLiteral("tick %1 published data point %2").arg(t).arg(stray)));
        if (recoveredAt == 0 && goodDecodes(rec) > decodedBefore)
            recoveredAt = t;
    }
    QVERIFY2(recoveredAt > 0 && recoveredAt <= recoveryBound,
             qPrintable(QStringLiteral("decoding resumed at tick %1, bound %2").arg(recoveredAt).arg(recoveryBound)));
    QCOMPARE(malformedSeen, !published.isEmpty());
    QCOMPARE(rec.count(1041), lost);
    QCOMPARE(rec.count(1040), restored);
    QCOMPARE(rec.count(2006), warmUp ? 0 : 1); // alarm 1 only on the very first discrete-input answer
    QCOMPARE(client.lostState, 0);
    QCOMPARE(client.failCount, 0);
}

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_core_faults.moc"
