// Modbus frames and answer decoding as pure functions over bytes: request
// fixtures, the control command table, and answers good and malformed.
#include <QtTest>

#include "upsanswer.h"
#include "upscommands.h"
#include "upsframes.h"

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

// Everything an answer decoded: non-zero registers n, identity blocks and
// active alarm numbers as 2000 + n.
using Items = QMap<int, QVariant>;
Items itemsOf(const UpsAnswer &answer)
{
    Items items;
    for (int n = 0; n < answer.registers.size(); ++n) {
        if (answer.registers.at(n))
            items.insert(n, int(answer.registers.at(n)));
    }
    for (const auto &block : answer.identity)
        items.insert(block.first, block.second);
    for (int n = -1; n <= 65; ++n) {
        if (answer.alarm(n))
            items.insert(2000 + n, answer.alarm(n));
    }
    return items;
}

} // namespace

Q_DECLARE_METATYPE(UpsAnswer::Kind)

class TestFrames : public QObject
{
    Q_OBJECT

private slots:
    void readRequests_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QByteArray>("frame");
        QTest::newRow("identity A") << 0 << hex("000000000006010402010070");
        QTest::newRow("identity B") << 1 << hex("000000000006010402710050");
        QTest::newRow("measurements") << 2 << hex("000000000006010401010049");
        QTest::newRow("alarms") << 3 << hex("000000000006010201010041");
    }

    void readRequests()
    {
        QFETCH(int, index);
        QFETCH(QByteArray, frame);
        QCOMPARE(UpsFrames::readRequest(index).toHex(), frame.toHex());
    }

    void commandFrames_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QString>("text");

        QTest::newRow("1003 selftest") << 1003 << "" << hex("00000000000601060001ffff") << "Selftest";
        QTest::newRow("1004 discharge 10") << 1004 << "10" << hex("00000000000601060006000a") << "Discharge";
        QTest::newRow("1004 negative") << 1004 << "-1" << hex("00000000000601060006ffff") << "Discharge";
        QTest::newRow("1005") << 1005 << "" << hex("00000000000601060002ffff") << "Discharge to low";
        QTest::newRow("1006 empty value") << 1006 << "" << hex("00000000000601060004ffff") << "Cancel task";
        QTest::newRow("1007 70000") << 1007 << "70000" << hex("000000000006010600071170") << "Shutdown UPS";
        QTest::newRow("1007 not a number") << 1007 << "soon" << hex("000000000006010600070000") << "Shutdown UPS";
        QTest::newRow("1008 60") << 1008 << "60" << hex("00000000000601060008003c") << "Standby UPS";
        QTest::newRow("1008 600") << 1008 << "600" << hex("000000000006010600080258") << "Standby UPS";
        QTest::newRow("1011 clock") << 1011 << "2026-11-22 10:00:00" << hex("000000000006010600000000") << "Time set";
        QTest::newRow("1013") << 1013 << "" << hex("00000000000601060005ffff") << "Cancel shutdown";
        QTest::newRow("1014 off") << 1014 << "0" << hex("00000000000601060003ffff") << "Buzzer switch";
        QTest::newRow("1014 on") << 1014 << "1" << hex("00000000000601060003ffff") << "Buzzer switch";
        QTest::newRow("unknown id") << 1009 << "5" << hex("000000000006010600000000") << "";
    }

    void commandFrames()
    {
        QFETCH(int, id);
        QFETCH(QString, value);
        QFETCH(QByteArray, frame);
        QFETCH(QString, text);
        const UpsCommands::Command &command = UpsCommands::find(id);
        QCOMPARE(UpsFrames::writeRequest(command.reg, UpsCommands::valueFor(command, value)).toHex(), frame.toHex());
        QCOMPARE(command.text ? QString::fromLatin1(command.text) : QString(), text);
    }

    void answers_data()
    {
        QTest::addColumn<QByteArray>("buffer");
        QTest::addColumn<UpsAnswer::Kind>("kind");
        QTest::addColumn<Items>("decoded"); // see itemsOf()
        using Kind = UpsAnswer::Kind;

        const QByteArray measurements = hex("000000000095010492");
        QByteArray data(146, '\0');
        data.replace(0, 2, hex("ffff"));      // 65535, never -1
        data.replace(10, 2, hex("ffec"));     // battery current -2.0 A as stored
        data.replace(36, 4, hex("12345678")); // a 32-bit pair: each id its own half
        data.replace(144, 2, hex("8000"));
        const Items full{{0, 0xFFFF}, {5, 0xFFEC}, {18, 0x1234}, {19, 0x5678}, {72, 0x8000}};
        QTest::newRow("73 registers") << measurements + data << Kind::Measurements << full;
        QTest::newRow("followed by another answer")
            << measurements + data + hex("000000000004010209") + QByteArray(9, '\xff') << Kind::Measurements << full;
        // The byte count promises 146 bytes; what is missing reads as zero.
        QTest::newRow("truncated after 5 bytes") << measurements + hex("ffffff00ff") << Kind::Measurements
                                                 << Items{{0, 0xFFFF}, {1, 0xFF00}, {2, 0xFF00}};
        QTest::newRow("14 bytes") << hex("0000000000070104920001000203") << Kind::Measurements
                                  << Items{{0, 1}, {1, 2}, {2, 0x0300}};

        // Identity blocks are kept as raw bytes; a short answer gives shorter or empty ones.
        QByteArray a; // every byte tells its own offset, NULs included
        for (int i = 0; i < 224; ++i)
            a += char(i);
        QTest::newRow("block 0x0201") << hex("0000000000e30104e0") + a << Kind::Identity
                                      << Items{{4001, a.mid(0, 32)}, {4000, a.mid(32, 64)},
                                               {4004, a.mid(96, 64)}, {4003, a.mid(160, 64)}};
        QTest::newRow("block 0x0201 truncated") << hex("0000000000e30104e0") + a.left(40) << Kind::Identity
                                                << Items{{4001, a.mid(0, 32)}, {4000, a.mid(32, 8)},
                                                         {4004, QByteArray()}, {4003, QByteArray()}};
        const QByteArray b = a.left(160);
        QTest::newRow("block 0x0271") << hex("0000000000a30104a0") + b << Kind::Identity
                                      << Items{{4005, b.mid(0, 64)}, {4002, b.mid(64, 64)}, {4006, b.mid(128, 32)}};
        QTest::newRow("block 0x0271, blanks kept")
            << hex("0000000000a30104a0") + QByteArray(160, ' ') << Kind::Identity
            << Items{{4005, QByteArray(64, ' ')}, {4002, QByteArray(64, ' ')}, {4006, QByteArray(32, ' ')}};

        const QByteArray alarms = hex("000000000004010209");
        QTest::newRow("bits 0, 3, 9, 26, 63") << alarms + hex("0902000400000080ff") << Kind::Alarms
                                              << Items{{2000, 1}, {2003, 1}, {2009, 1}, {2026, 1}, {2063, 1}};
        QTest::newRow("ninth byte ignored") << alarms + hex("0000000000000000ff") << Kind::Alarms << Items();
        // Five of nine bytes: the missing ones read as zero.
        Items low{{2000, 1}};
        for (int n = 32; n < 40; ++n)
            low.insert(2000 + n, 1);
        QTest::newRow("alarms truncated") << alarms + hex("01000000ff") << Kind::Alarms << low;

        QTest::newRow("unknown byte count") << hex("000000000053010450") + QByteArray(0x50, '\x11') << Kind::Unknown
                                            << Items();
        QTest::newRow("empty") << QByteArray() << Kind::Dropped << Items();
        QTest::newRow("exception answer") << hex("000000000003018402") << Kind::Dropped << Items();
        QTest::newRow("13 bytes") << hex("00000000000701049200010002") << Kind::Dropped << Items();
    }

    void answers()
    {
        QFETCH(QByteArray, buffer);
        QFETCH(UpsAnswer::Kind, kind);
        QFETCH(Items, decoded);
        const UpsAnswer answer = UpsAnswer::decode(buffer);
        QCOMPARE(answer.kind, kind);
        QCOMPARE(answer.accepted(), kind != UpsAnswer::Kind::Dropped);
        QCOMPARE(itemsOf(answer), decoded);
        const bool measurements = kind == UpsAnswer::Kind::Measurements;
        QCOMPARE(answer.registers.size(), measurements ? 73 : 0);
        QCOMPARE(answer.rawData.toHex(), measurements ? buffer.mid(9, 146).toHex() : QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestFrames)
#include "tst_core_frames.moc"
