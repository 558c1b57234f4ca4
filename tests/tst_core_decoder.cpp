// Decoding of received buffers, driven without a socket.
#include <QRandomGenerator>
#include <QtTest>

#include "eventrecorder.h"
#include "fakeagent.h"
#include "orvekclient.h"

namespace {

// "type:alarmId:alarmState" per event; plain "type" for events without alarm
// keys. The keys of the last changed alarm stay for the 2001 and 2007 that follow.
QStringList describe(const QList<EventRecorder::Event> &events)
{
    QStringList out;
    for (const auto &e : events) {
        const auto &m = e.second;
        const QString alarm = QStringLiteral(":%1:%2").arg(m.value("alarmId").toInt()).arg(m.value("alarmState").toInt());
        out << QString::number(e.first) + (m.contains("alarmId") ? alarm : QString());
    }
    return out;
}

bool isKnownId(int id)
{
    return (id >= 0 && id <= 72) || (id >= 2000 && id <= 2026) || (id >= 4000 && id <= 4006) || id == 4014;
}

} // namespace

class TestDecoder : public QObject
{
    Q_OBJECT

private slots:
    void measurementsAreUnsigned();
    void contactAndRestoration_data();
    void contactAndRestoration();
    void identityBlocksKeptRaw_data();
    void identityBlocksKeptRaw();
    void alarmTransitions_data();
    void alarmTransitions();
    void twoAnswersInOneBuffer();
    void randomBuffersStayInBounds();
};

void TestDecoder::measurementsAreUnsigned()
{
    OrvekClient client;
    client.lostState = 0;
    EventRecorder rec(&client);
    QVector<quint16> regs(73);
    for (int i = 0; i < 73; ++i)
        regs[i] = quint16(1000 + i);
    regs[0] = 0xFFFF;
    regs[5] = 0xFFEC; // battery current -2.0 A as stored
    regs[18] = 0x1234; // each half of a 32-bit pair keeps its own 16 bits
    regs[19] = 0x5678;
    regs[72] = 0x8000;
    const QByteArray a = FakeAgent::registersAnswer(regs);
    client.decodeAnswer(a);

    for (int n = 0; n < 73; ++n)
        QCOMPARE(client.dataPoints.value(n).toInt(), int(regs[n]));
    QCOMPARE(client.dataPoints.size(), 74); // ids 0..72 and 4014
    QCOMPARE(rec.types(), QList<int>{2007});
    const auto ev = rec.events().first().second;
    QCOMPARE(ev.value("data").value<DataPointMap>(), client.dataPoints);
    QCOMPARE(ev.value("raw_data").toByteArray(), a.mid(9, 146));
}

void TestDecoder::contactAndRestoration_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("decodedIds"); // data points besides 4014; -1: dropped
    QTest::newRow("alarms all clear") << FakeAgent::alarmAnswer(FakeAgent::alarmBits({})) << 27;
    QTest::newRow("unknown byte count") << FakeAgent::answer(0x04, QByteArray(0x50, '\x11')) << 0;
    QTest::newRow("empty") << QByteArray() << -1;
    QTest::newRow("exception answer") << QByteArray::fromHex("000000000003018402") << -1;
    QTest::newRow("13 bytes") << QByteArray::fromHex("00000000000701049200010002") << -1;
}

void TestDecoder::contactAndRestoration()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, decodedIds);
    OrvekClient client;
    client.name = QStringLiteral("ups-a");
    client.targetAddress = QStringLiteral("127.1.2.3");
    client.failCount = 4;
    EventRecorder rec(&client);
    client.decodeAnswer(answer);
    if (decodedIds < 0) { // dropped without a trace
        QVERIFY(rec.events().isEmpty());
        QCOMPARE(client.failCount, 4);
        QCOMPARE(client.lostState, -1);
        QVERIFY(client.dataPoints.isEmpty());
        return;
    }
    // Any accepted answer counts as contact: the restoration, then the decode.
    QCOMPARE(rec.types(), (QList<int>{1040, 2001, 2007}));
    QCOMPARE(client.lostState, 0);
    QCOMPARE(client.failCount, 0);
    const auto restored = rec.events().at(0).second;
    QCOMPARE(restored.value("desc").toString(), QStringLiteral("ups-a"));
    QCOMPARE(restored.value("state").toInt(), 0);
    QCOMPARE(client.dataPoints.size(), decodedIds + 1);
    QCOMPARE(client.dataPoints.value(4014).toString(), QStringLiteral("127.1.2.3"));

    rec.clear();
    client.decodeAnswer(answer);
    QCOMPARE(rec.types(), QList<int>{2007});
}

void TestDecoder::identityBlocksKeptRaw_data()
{
    QTest::addColumn<int>("registers");
    QTest::addColumn<QList<int>>("slices"); // id, offset in the data, length
    QTest::newRow("block 0x0201") << 112 << QList<int>{4001, 0, 32, 4000, 32, 64, 4004, 96, 64, 4003, 160, 64};
    QTest::newRow("block 0x0271") << 80 << QList<int>{4005, 0, 64, 4002, 64, 64, 4006, 128, 32};
}

void TestDecoder::identityBlocksKeptRaw()
{
    QFETCH(int, registers);
    QFETCH(QList<int>, slices);
    QByteArray data(registers * 2, ' ');
    for (int i = 0; i < data.size(); ++i)
        data[i] = char(i % 7 == 0 ? 0 : 'A' + i % 26); // NULs inside, blanks nowhere
    data.replace(0, 5, "Orvek");
    OrvekClient client;
    client.lostState = 0;
    EventRecorder rec(&client);
    client.decodeAnswer(FakeAgent::answer(0x04, data));
    for (int i = 0; i < slices.size(); i += 3) {
        const QVariant v = client.dataPoints.value(slices[i]);
        QCOMPARE(v.userType(), int(QMetaType::QByteArray));
        QCOMPARE(v.toByteArray(), data.mid(slices[i + 1], slices[i + 2]));
    }
    QCOMPARE(client.dataPoints.size(), slices.size() / 3 + 1); // and 4014
    QCOMPARE(rec.types(), QList<int>{2007});
}

void TestDecoder::alarmTransitions_data()
{
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<QList<int>>("after");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("battery low raised") << QList<int>{} << QList<int>{3}
                                        << QStringList{"2006:3:1", "2010:3:1", "2001:3:1", "2007:3:1"};
    QTest::newRow("battery low cleared") << QList<int>{3} << QList<int>{}
                                         << QStringList{"2006:57:0", "2010:57:0", "2007:57:0"};
    QTest::newRow("input fault raised") << QList<int>{} << QList<int>{6}
                                        << QStringList{"2006:6:1", "2009:6:1", "2001:6:1", "2007:6:1"};
    QTest::newRow("input fault cleared") << QList<int>{6} << QList<int>{}
                                         << QStringList{"2006:60:0", "2009:60:0", "2007:60:0"};
    QTest::newRow("ascending order, mixed")
        << QList<int>{2, 26} << QList<int>{0, 9, 26}
        << QStringList{"2006:0:1", "2006:56:0", "2006:9:1", "2001:9:1", "2007:9:1"};
    QTest::newRow("bits above 26 ignored") << QList<int>{} << QList<int>{27, 30, 53, 63, 64}
                                           << QStringList{"2007"};
    QTest::newRow("unchanged active alarm") << QList<int>{5} << QList<int>{5} << QStringList{"2007"};
}

void TestDecoder::alarmTransitions()
{
    QFETCH(QList<int>, before);
    QFETCH(QList<int>, after);
    QFETCH(QStringList, expected);

    OrvekClient client;
    client.decodeAnswer(FakeAgent::alarmAnswer(FakeAgent::alarmBits(before)));
    EventRecorder rec(&client);
    client.decodeAnswer(FakeAgent::alarmAnswer(FakeAgent::alarmBits(after)));
    QCOMPARE(describe(rec.events()), expected);

    for (int i = 0; i < 72; ++i)
        QCOMPARE(client.dataPoints.value(2000 + i), i <= 26 ? QVariant(int(after.contains(i))) : QVariant());

    // "dis_alarm" says whether this answer raised an alarm (then also told by 2001).
    const bool raised = rec.count(2001) > 0;
    QCOMPARE(rec.events().last().second.value("dis_alarm").toInt(), int(raised));
    if (raised)
        QCOMPARE(rec.ofType(2001).last().second.value("state").toInt(), 0);
}

void TestDecoder::twoAnswersInOneBuffer()
{
    OrvekClient client;
    client.lostState = 0;
    EventRecorder rec(&client);
    const QByteArray both = FakeAgent::alarmAnswer(FakeAgent::alarmBits({2}))
                            + FakeAgent::registersAnswer(QVector<quint16>(73, 1));
    client.decodeAnswer(both);
    QCOMPARE(client.dataPoints.value(2002).toInt(), 1);
    QVERIFY(!client.dataPoints.contains(0)); // the second answer is not decoded
    QCOMPARE(describe(rec.events()), (QStringList{"2006:2:1", "2001:2:1", "2007:2:1"}));
}

void TestDecoder::randomBuffersStayInBounds()
{
    // Any bytes at all: only known ids appear, and (under the sanitizer
    // build) nothing is read outside the buffer.
    QRandomGenerator rng(20261122);
    const quint8 counts[] = {0x92, 0xE0, 0xA0, 0x09, 0x00, 0xFF};
    OrvekClient client;
    EventRecorder rec(&client);
    for (int round = 0; round < 3000; ++round) {
        QByteArray buffer(int(rng.bounded(300)), '\0');
        for (int i = 0; i < buffer.size(); ++i)
            buffer[i] = char(rng.bounded(256));
        if (buffer.size() > 8 && rng.bounded(2))
            buffer[8] = char(counts[rng.bounded(int(std::size(counts)))]);
        client.decodeAnswer(buffer);
    }
    for (int id : client.dataPoints.keys())
        QVERIFY2(isKnownId(id), qPrintable(QString::number(id)));
    for (auto v : client.dataPoints) {
        if (v.userType() == QMetaType::Int)
            QVERIFY(v.toInt() >= 0 && v.toInt() <= 0xFFFF);
    }
    QVERIFY(rec.count(2007) > 0);
}

QTEST_GUILESS_MAIN(TestDecoder)
#include "tst_core_decoder.moc"
