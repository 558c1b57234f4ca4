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
constexpr int kConnectWaitMs = 1500; // no pause before connecting
constexpr int kAnswerWaitMs = 1000;  // interval 1
constexpr int kSlackMs = 2000;
constexpr int kRotation = 4;
constexpr int kMeasurementIndex = 2; // rotation position of the block 0x0101
constexpr int kRegisters = 73;
constexpr int kReadChunk = 1024; // the client's socket read buffer: one read per tick
constexpr int kLongestAnswer = 9 + 224;

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
const QByteArray kGood = measurementAnswer(0x31);
// Distinct values, so that the test can tell whether a malformed answer was published.
const QByteArray kForeign = measurementAnswer(0x71);
const QByteArray kGoodAlarms = FakeAgent::alarmAnswer(FakeAgent::alarmBits({1}));

QByteArray goodReply(const QByteArray &request)
{
    if (request == OrvekClient::readRequest(kMeasurementIndex))
        return kGood;
    if (request == OrvekClient::readRequest(kMeasurementIndex + 1))
        return kGoodAlarms;
    return FakeAgent::answer(0x04, QByteArray(2 * quint8(request.at(11)), 'U')); // identity text
}

QByteArray patched(QByteArray answer, int at, const char *hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    return answer.replace(at, bytes.size(), bytes);
}

// A measurement answer followed by filler up to `total` bytes, MBAP length to match.
QByteArray oversize(int total)
{
    const QByteArray a = kForeign + QByteArray(total - kForeign.size(), 'Z');
    return a.left(4) + char((total - 6) >> 8) + char((total - 6) & 0xFF) + a.mid(6);
}

// Register values as the answer's bytes give them; bytes missing read as zero.
QList<int> registersOf(const QByteArray &answer)
{
    const QByteArray data = answer.mid(9).leftJustified(2 * kRegisters, '\0');
    QList<int> regs;
    for (int n = 0; n < kRegisters; ++n)
        regs << ((quint8(data.at(2 * n)) << 8) | quint8(data.at(2 * n + 1)));
    return regs;
}

// The first identity or alarm data point that differs from those of one
// regular answer to each request, or -1.
int strayPoint(const DataPointMap &points)
{
    static const DataPointMap reference = [] {
        OrvekClient c;
        for (int i = 0; i < kRotation; ++i)
            c.decodeAnswer(goodReply(OrvekClient::readRequest(i)));
        return c.dataPoints;
    }();
    for (auto it = points.constBegin(); it != points.constEnd(); ++it) {
        if (it.key() >= 2000 && it.key() != 4014 && it.value() != reference.value(it.key()))
            return it.key();
    }
    return -1;
}

int goodDecodes(const EventRecorder &rec)
{
    const auto events = rec.ofType(2007);
    return int(std::count_if(events.begin(), events.end(),
                             [](const auto &e) { return e.second.value("raw_data").toByteArray() == kGood.mid(9); }));
}

} // namespace

// What the agent does once armed: `plan` for the next `times` requests, regular
// answers after them; `drop` aborts the open connection first and
// `closeOnAccept` closes that many new connections as soon as they are accepted.
struct Fault
{
    Plan plan;
    int times = 0;
    bool drop = false;
    int closeOnAccept = 0;
};
Q_DECLARE_METATYPE(Fault)

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void faultMatrix_data()
    {
        QTest::addColumn<Fault>("fault");
        // faultTicks: ticks the fault may last; well-formed answers are decoded again within two rotations more.
        QTest::addColumn<int>("faultTicks");
        // published: measurement values published from the malformed answer; empty: none.
        QTest::addColumn<QList<int>>("published");
        // lost: 1041 reports after arming, each followed by one 1040 on recovery.
        QTest::addColumn<int>("lost");
        // downTicks: the agent is stopped when armed and listens again after that many ticks; -1: it stays up.
        QTest::addColumn<int>("downTicks");
        QTest::addColumn<bool>("warmUp");

        const auto row = [](const char *name, const Fault &fault, int faultTicks, const QList<int> &published = {},
                            int lost = 0, int downTicks = -1, bool warmUp = true) {
            QTest::newRow(name) << fault << faultTicks << published << lost << downTicks << warmUp;
        };
        const auto once = [](const Plan &plan) { return Fault{plan, 1}; };
        const auto send = [](const QByteArray &bytes) { return Fault{{Step::send(bytes)}, 1}; };
        const QList<int> foreign = registersOf(kForeign);
        Plan drip; // one byte every 50 ms
        for (char c : kGoodAlarms)
            drip << Step::wait(50) << Step::send(QByteArray(1, c));

        // The 9-byte header arrives alone and is dropped (under 14 bytes). The body
        // is read on its own and taken by its byte 8, here the high byte of
        // register 4 (0x71): an unknown count, so none of its values are published.
        row("split answer", once({Step::send(kForeign.left(9)), Step::wait(500), Step::send(kForeign.mid(9))}), 2);
        // Only the first answer of a read is decoded: the measurements are, the
        // discrete inputs behind them (alarm 5 raised) are not.
        row("two answers in one segment", send(kGood + FakeAgent::alarmAnswer(FakeAgent::alarmBits({1, 5}))), 0);
        row("short answer", send(kForeign.left(13)), 1);
        // Decoded by its byte count from what arrived: the missing registers read as zero.
        row("truncated answer", send(kForeign.left(60)), 1, registersOf(kForeign.left(60)));
        row("exception answer", send(QByteArray::fromHex("000000000003018402")), 1);
        // The MBAP header, unit id and function code are not inspected and
        // answers are not matched to requests: the byte count alone selects the
        // decoder, so these are decoded and published as usual.
        row("byte count vs MBAP length", send(patched(kForeign, 4, "0006")), 1, foreign);
        row("MBAP length beyond data", send(patched(kForeign, 4, "0400")), 1, foreign);
        row("wrong transaction id", send(patched(kForeign, 0, "1234")), 1, foreign);
        row("wrong unit id", send(patched(kForeign, 6, "07")), 1, foreign);
        row("wrong function code", send(patched(kForeign, 7, "03")), 1, foreign);
        // An MBAP header with length 0 and nothing behind it: dropped.
        row("zero length", send(QByteArray::fromHex("00000000000001")), 1);
        // 14 bytes or more: contact with an unknown byte count, nothing decoded.
        row("garbage bytes", send("garbage on the line, not a Modbus frame"), 1);
        // The leading answer is decoded by its count, the filler behind it in the same read dropped.
        row("oversize 600", send(oversize(600)), 1, foreign);
        // The first 1 KB read is decoded as above; the rest of the filler takes
        // further reads that count as contact only.
        row("oversize 3000", send(oversize(3000)), 1 + drainTicks(3000 - kReadChunk), foreign);
        // 'Z' filler: one 1 KB read a tick, each contact with an unknown byte
        // count; no read of it can pass for an answer.
        row("40 KB junk burst", send(QByteArray(40 * 1024, 'Z')), drainTicks(40 * 1024));
        // Every tick takes the byte that has arrived and drops it; the answers
        // queued behind the drip then come as one burst.
        row("drip feed", once(drip), kGoodAlarms.size() + drainTicks(kGoodAlarms.size() * kLongestAnswer));
        // The client reconnects to an agent that keeps silent. Unanswered
        // requests are no failed connection attempts: not lost.
        row("accepts, never answers", Fault{Plan(), 3, true}, 5);
        row("freeze mid-rotation", once({Step::wait(2500), Step::send(kGood)}), 3);
        // Each accepted connection counts as an attempt without an answer.
        row("close right after accept", Fault{Plan(), 0, true, 3}, 8, {}, 1);
        // The part that arrived is decoded by its byte count, zero-filled.
        row("reset mid-answer", once({Step::send(kForeign.left(100)), Step::wait(300), Step::reset()}), 3,
            registersOf(kForeign.left(100)));
        // Nothing listens from the start: lost once after two refusals however
        // many follow, restored by the first answer once the agent is up.
        row("refused port", Fault(), 4, {}, 1, 3, false);
        // Arrives in the next request's wait and is decoded there by its own byte count.
        row("late answer", once({Step::wait(kAnswerWaitMs + 300), Step::send(kForeign)}), 2, foreign);
        // The dead connection costs a tick and the reconnect one attempt, fewer than retries.
        row("agent restart, quick", Fault(), 2, {}, 0, 0);
        // Down for four ticks: the dead connection, then refused attempts.
        row("agent restart, lost", Fault(), 5, {}, 1, 4);
    }

    void faultMatrix()
    {
        QFETCH(Fault, fault);
        QFETCH(int, faultTicks);
        QFETCH(QList<int>, published);
        QFETCH(int, lost);
        QFETCH(int, downTicks);
        QFETCH(bool, warmUp);

        FakeAgent agent;
        agent.setResponder(goodReply);
        const quint16 port = agent.start();
        QVERIFY(port != 0);
        OrvekClient client;
        client.name = QStringLiteral("fault-ups");
        client.setTarget(QStringLiteral("127.0.0.1"), port);
        client.retries = kRetries;
        client.interval = 1;
        client.setConnectTimings(0, kConnectWaitMs);
        EventRecorder rec(&client);
        const auto tick = [&client] { // one host-driven cycle now, whatever the schedule says
            client.nextPollTime = 0;
            client.poll();
        };

        if (warmUp) {
            // Connect and run a rotation, up to where the measurement request is next.
            const auto warm = [&] { return goodDecodes(rec) > 0 && client.requestIndex == kMeasurementIndex; };
            for (int i = 0; i < 3 * kRotation && !warm(); ++i)
                tick();
            QVERIFY(goodDecodes(rec) > 0);
            QCOMPARE(client.requestIndex, kMeasurementIndex);
            rec.clear();
        }
        if (downTicks >= 0)
            agent.stop();
        if (fault.drop)
            agent.dropConnections();
        agent.closeNextConnections(fault.closeOnAccept);
        agent.setScript([fault](const QByteArray &request, int ordinal) {
            return ordinal < fault.times ? fault.plan : Plan{Step::send(goodReply(request))};
        });

        const QList<int> good = registersOf(kGood);
        const QList<int> undecoded = QVector<int>(kRegisters, -1).toList();
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
            tick();
            const qint64 ms = timer.elapsed();
            const int limit = (connected ? kAnswerWaitMs : kConnectWaitMs) + kSlackMs;
            QVERIFY2(ms <= limit, qPrintable(QStringLiteral("tick %1 took %2 ms").arg(t).arg(ms)));

            QList<int> regs; // -1 where none was decoded yet
            for (int n = 0; n < kRegisters; ++n)
                regs << client.dataPoints.value(n, -1).toInt();
            const bool malformed = !published.isEmpty() && regs == published;
            malformedSeen = malformedSeen || malformed;
            QVERIFY2(regs == good || regs == undecoded || malformed,
                     qPrintable(QStringLiteral("tick %1 published unexpected measurements").arg(t)));
            const int stray = strayPoint(client.dataPoints);
            QVERIFY2(stray < 0, qPrintable(QStringLiteral("tick %1 published data point %2").arg(t).arg(stray)));
            if (recoveredAt == 0 && goodDecodes(rec) > decodedBefore)
                recoveredAt = t;
        }
        QVERIFY2(recoveredAt > 0 && recoveredAt <= recoveryBound,
                 qPrintable(QStringLiteral("decoding resumed at tick %1, bound %2")
                                .arg(recoveredAt).arg(recoveryBound)));
        QCOMPARE(malformedSeen, !published.isEmpty());
        QCOMPARE(rec.count(1041), lost);
        QCOMPARE(rec.count(1040), lost);
        QCOMPARE(rec.count(2006), warmUp ? 0 : 1); // alarm 1 only on the very first discrete-input answer
        QCOMPARE(client.lostState, 0);
        QCOMPARE(client.failCount, 0);
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_core_faults.moc"
