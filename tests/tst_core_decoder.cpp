// What the client makes of a received buffer: its data point map and the
// events it sends, driven without a socket. The byte-level decoding itself,
// also of several answers in one buffer, is covered by tst_core_frames.
#include <QtTest>

#include "eventrecorder.h"
#include "fakeagent.h"
#include "orvekclient.h"
#include "upsanswer.h"

namespace {

// "type:alarmId:alarmState" per event; plain "type" for events without alarm
// keys. The keys of the last changed alarm stay for the 2001 and 2007 that follow.
QStringList describe(const QList<EventRecorder::Event> &events)
{
    QStringList out;
    for (const auto &e : events) {
        const auto &m = e.second;
        const QString alarm =
            QStringLiteral(":%1:%2").arg(m.value("alarmId").toInt()).arg(m.value("alarmState").toInt());
        out << QString::number(e.first) + (m.contains("alarmId") ? alarm : QString());
    }
    return out;
}

QByteArray measurementAnswer()
{
    QByteArray data;
    for (int i = 0; i < 73; ++i)
        data.append('\xff').append(char(i)); // above 0x7FFF: must stay unsigned
    return FakeAgent::answer(0x04, data);
}

} // namespace

class TestDecoder : public QObject
{
    Q_OBJECT

private slots:
    void answerReachesMapAndEvents_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("decodedIds"); // data points besides 4014; -1: dropped
        QTest::newRow("measurements") << measurementAnswer() << 73;
        // Registers 1, 2, 3...: identity texts with NULs inside.
        QTest::newRow("identity 0x0201") << FakeAgent::defaultReply(OrvekClient::readRequest(0)) << 4;
        QTest::newRow("identity 0x0271") << FakeAgent::defaultReply(OrvekClient::readRequest(1)) << 3;
        QTest::newRow("alarms all clear") << FakeAgent::alarmAnswer(FakeAgent::alarmBits({})) << 27;
        QTest::newRow("unknown byte count") << FakeAgent::answer(0x04, QByteArray(0x50, '\x11')) << 0;
        QTest::newRow("exception answer") << QByteArray::fromHex("000000000003018402") << -1;
        QTest::newRow("13 bytes") << QByteArray::fromHex("00000000000701049200010002") << -1;
    }

    void answerReachesMapAndEvents()
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
        QCOMPARE(rec.events().at(0).second.value("desc").toString(), QStringLiteral("ups-a"));
        QCOMPARE(rec.events().at(0).second.value("state").toInt(), 0);
        QCOMPARE(client.dataPoints.size(), decodedIds + 1);
        QCOMPARE(client.dataPoints.value(4014).toString(), QStringLiteral("127.1.2.3"));

        // The map holds what the answer says: unsigned registers, identity bytes as received.
        const UpsAnswer decoded = UpsAnswer::decode(answer);
        for (int n = 0; n < decoded.registers.size(); ++n)
            QCOMPARE(client.dataPoints.value(n), QVariant(int(decoded.registers.at(n))));
        for (const auto &block : decoded.identity) {
            QCOMPARE(client.dataPoints.value(block.first).userType(), int(QMetaType::QByteArray));
            QCOMPARE(client.dataPoints.value(block.first).toByteArray(), block.second);
        }
        if (decoded.kind == UpsAnswer::Kind::Measurements) {
            const auto decodeEvent = rec.events().last().second;
            QCOMPARE(decodeEvent.value("data").value<DataPointMap>(), client.dataPoints);
            QCOMPARE(decodeEvent.value("raw_data").toByteArray(), answer.mid(9, 146));
        }

        rec.clear();
        client.decodeAnswer(answer);
        QCOMPARE(rec.types(), QList<int>{2007});
    }

    void alarmTransitions_data()
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

    void alarmTransitions()
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
};

QTEST_GUILESS_MAIN(TestDecoder)
#include "tst_core_decoder.moc"
