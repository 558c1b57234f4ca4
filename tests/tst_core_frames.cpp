// Modbus frames and answer decoding as pure functions over bytes: request
// fixtures, the control command table, and answers good and malformed.
#include <QtTest>

#include "upsanswer.h"
#include "upscommands.h"
#include "upsframes.h"

namespace {

// An answer of the agent: MBAP header, function, byte count, then data.
QByteArray answer(const char *headerHex, const QByteArray &data)
{
    return QByteArray::fromHex(headerHex) + data;
}

// Identity data whose every byte tells its own offset, NULs included.
QByteArray offsetBytes(int size)
{
    QByteArray data(size, '\0');
    for (int i = 0; i < size; ++i)
        data[i] = char(i % 251);
    return data;
}

using Registers = QMap<int, int>;
using Blocks = QList<QPair<int, QByteArray>>;

} // namespace

Q_DECLARE_METATYPE(UpsAnswer::Kind)

class TestFrames : public QObject
{
    Q_OBJECT

private slots:
    void readRequests_data();
    void readRequests();
    void commandFrames_data();
    void commandFrames();
    void measurements_data();
    void measurements();
    void identity_data();
    void identity();
    void alarms_data();
    void alarms();
    void notDecoded_data();
    void notDecoded();
};

void TestFrames::readRequests_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("identity A") << 0 << QByteArray::fromHex("000000000006010402010070");
    QTest::newRow("identity B") << 1 << QByteArray::fromHex("000000000006010402710050");
    QTest::newRow("measurements") << 2 << QByteArray::fromHex("000000000006010401010049");
    QTest::newRow("alarms") << 3 << QByteArray::fromHex("000000000006010201010041");
}

void TestFrames::readRequests()
{
    QFETCH(int, index);
    QFETCH(QByteArray, frame);
    QCOMPARE(UpsFrames::readRequest(index).toHex(), frame.toHex());
}

void TestFrames::commandFrames_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("text");

    QTest::newRow("1003 selftest") << 1003 << "" << QByteArray::fromHex("00000000000601060001ffff") << "Selftest";
    QTest::newRow("1004 discharge 10") << 1004 << "10" << QByteArray::fromHex("00000000000601060006000a") << "Discharge";
    QTest::newRow("1004 negative") << 1004 << "-1" << QByteArray::fromHex("00000000000601060006ffff") << "Discharge";
    QTest::newRow("1005") << 1005 << "" << QByteArray::fromHex("00000000000601060002ffff") << "Discharge to low";
    QTest::newRow("1006 empty value") << 1006 << "" << QByteArray::fromHex("00000000000601060004ffff") << "Cancel task";
    QTest::newRow("1007 70000") << 1007 << "70000" << QByteArray::fromHex("000000000006010600071170") << "Shutdown UPS";
    QTest::newRow("1007 not a number") << 1007 << "soon" << QByteArray::fromHex("000000000006010600070000") << "Shutdown UPS";
    QTest::newRow("1008 60") << 1008 << "60" << QByteArray::fromHex("00000000000601060008003c") << "Standby UPS";
    QTest::newRow("1008 600") << 1008 << "600" << QByteArray::fromHex("000000000006010600080258") << "Standby UPS";
    QTest::newRow("1011 clock") << 1011 << "2026-11-22 10:00:00" << QByteArray::fromHex("000000000006010600000000") << "Time set";
    QTest::newRow("1013") << 1013 << "" << QByteArray::fromHex("00000000000601060005ffff") << "Cancel shutdown";
    QTest::newRow("1014 off") << 1014 << "0" << QByteArray::fromHex("00000000000601060003ffff") << "Buzzer switch";
    QTest::newRow("1014 on") << 1014 << "1" << QByteArray::fromHex("00000000000601060003ffff") << "Buzzer switch";
    QTest::newRow("unknown id") << 1009 << "5" << QByteArray::fromHex("000000000006010600000000") << "";
}

void TestFrames::commandFrames()
{
    QFETCH(int, id);
    QFETCH(QString, value);
    QFETCH(QByteArray, frame);
    QFETCH(QString, text);
    const UpsCommands::Command &command = UpsCommands::find(id);
    QCOMPARE(UpsFrames::writeRequest(command.reg, UpsCommands::valueFor(command, value)).toHex(), frame.toHex());
    QCOMPARE(command.text ? QString::fromLatin1(command.text) : QString(), text);
}

void TestFrames::measurements_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<Registers>("registers"); // checked ids; every other one reads 0

    QByteArray data(146, '\0');
    data.replace(0, 2, QByteArray::fromHex("ffff"));      // 65535, never -1
    data.replace(10, 2, QByteArray::fromHex("ffec"));     // battery current -2.0 A as stored
    data.replace(36, 4, QByteArray::fromHex("12345678")); // a 32-bit pair: each id its own half
    data.replace(144, 2, QByteArray::fromHex("8000"));
    const Registers full{{0, 0xFFFF}, {5, 0xFFEC}, {18, 0x1234}, {19, 0x5678}, {72, 0x8000}};
    QTest::newRow("73 registers") << answer("000000000095010492", data) << full;
    QTest::newRow("followed by another answer")
        << answer("000000000095010492", data) + answer("000000000004010209", QByteArray(9, '\xff')) << full;
    // The byte count promises 146 bytes; what is missing reads as zero.
    QTest::newRow("truncated after 5 bytes")
        << answer("000000000095010492", QByteArray::fromHex("ffffff00ff")) << Registers{{0, 0xFFFF}, {1, 0xFF00}, {2, 0xFF00}};
}

void TestFrames::measurements()
{
    QFETCH(QByteArray, buffer);
    QFETCH(Registers, registers);
    const UpsAnswer decoded = UpsAnswer::decode(buffer);
    QCOMPARE(decoded.kind, UpsAnswer::Kind::Measurements);
    QCOMPARE(decoded.registers.size(), 73);
    for (int n = 0; n < decoded.registers.size(); ++n)
        QCOMPARE(int(decoded.registers.at(n)), registers.value(n, 0));
    QCOMPARE(decoded.rawData, buffer.mid(9, 146));
}

void TestFrames::identity_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<Blocks>("blocks"); // data point id and raw bytes

    const QByteArray a = offsetBytes(224);
    QTest::newRow("block 0x0201") << answer("0000000000e30104e0", a)
                                  << Blocks{{4001, a.mid(0, 32)}, {4000, a.mid(32, 64)},
                                            {4004, a.mid(96, 64)}, {4003, a.mid(160, 64)}};
    QTest::newRow("block 0x0201 truncated") << answer("0000000000e30104e0", a.left(40))
                                            << Blocks{{4001, a.mid(0, 32)}, {4000, a.mid(32, 8)},
                                                      {4004, QByteArray()}, {4003, QByteArray()}};
    const QByteArray b = offsetBytes(160);
    QTest::newRow("block 0x0271") << answer("0000000000a30104a0", b)
                                  << Blocks{{4005, b.mid(0, 64)}, {4002, b.mid(64, 64)}, {4006, b.mid(128, 32)}};
    QTest::newRow("block 0x0271, blanks kept") << answer("0000000000a30104a0", QByteArray(160, ' '))
                                               << Blocks{{4005, QByteArray(64, ' ')}, {4002, QByteArray(64, ' ')},
                                                         {4006, QByteArray(32, ' ')}};
}

void TestFrames::identity()
{
    QFETCH(QByteArray, buffer);
    QFETCH(Blocks, blocks);
    const UpsAnswer decoded = UpsAnswer::decode(buffer);
    QCOMPARE(decoded.kind, UpsAnswer::Kind::Identity);
    QCOMPARE(decoded.identity.size(), blocks.size());
    for (int i = 0; i < blocks.size(); ++i) {
        QCOMPARE(decoded.identity.at(i).first, blocks.at(i).first);
        QCOMPARE(decoded.identity.at(i).second.toHex(), blocks.at(i).second.toHex());
    }
}

void TestFrames::alarms_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<QList<int>>("active");

    QTest::newRow("bits 0, 3, 9, 26, 63") << answer("000000000004010209", QByteArray::fromHex("0902000400000080ff"))
                                          << QList<int>{0, 3, 9, 26, 63};
    QTest::newRow("ninth byte ignored") << answer("000000000004010209", QByteArray::fromHex("0000000000000000ff"))
                                        << QList<int>{};
    // Five of nine bytes: the missing ones read as zero.
    QTest::newRow("truncated") << answer("000000000004010209", QByteArray::fromHex("01000000ff"))
                               << QList<int>{0, 32, 33, 34, 35, 36, 37, 38, 39};
}

void TestFrames::alarms()
{
    QFETCH(QByteArray, buffer);
    QFETCH(QList<int>, active);
    const UpsAnswer decoded = UpsAnswer::decode(buffer);
    QCOMPARE(decoded.kind, UpsAnswer::Kind::Alarms);
    for (int number = -1; number <= 65; ++number)
        QCOMPARE(decoded.alarm(number), int(active.contains(number)));
}

void TestFrames::notDecoded_data()
{
    QTest::addColumn<QByteArray>("buffer");
    QTest::addColumn<UpsAnswer::Kind>("kind");

    QTest::newRow("unknown byte count") << answer("000000000053010450", QByteArray(0x50, '\x11'))
                                        << UpsAnswer::Kind::Unknown;
    QTest::newRow("empty") << QByteArray() << UpsAnswer::Kind::Dropped;
    QTest::newRow("exception answer") << QByteArray::fromHex("000000000003018402") << UpsAnswer::Kind::Dropped;
    QTest::newRow("13 bytes") << QByteArray::fromHex("00000000000701049200010002") << UpsAnswer::Kind::Dropped;
    QTest::newRow("14 bytes") << QByteArray::fromHex("0000000000070104920001000203") << UpsAnswer::Kind::Measurements;
}

void TestFrames::notDecoded()
{
    QFETCH(QByteArray, buffer);
    QFETCH(UpsAnswer::Kind, kind);
    const UpsAnswer decoded = UpsAnswer::decode(buffer);
    QCOMPARE(decoded.kind, kind);
    QCOMPARE(decoded.accepted(), kind != UpsAnswer::Kind::Dropped);
    if (kind != UpsAnswer::Kind::Measurements)
        QVERIFY(decoded.registers.isEmpty() && decoded.identity.isEmpty() && decoded.alarmBits == 0);
}

QTEST_GUILESS_MAIN(TestFrames)
#include "tst_core_frames.moc"
