#ifndef VIEWSAMPLEDATA_H
#define VIEWSAMPLEDATA_H

#include <QByteArray>
#include <QMap>
#include <QStringList>
#include <QVariant>

#include <limits>

// A complete data point map as a healthy UPS in utility mode delivers it after
// one full request rotation: registers 0..72, alarm states 2000..2026, the
// identity blocks 4000..4006 (NUL padded, as read from the agent) and the
// agent address 4014. Header-only so that benchmarks can use it too.
namespace ViewSampleData {

inline QByteArray identityBlock(const char *text, int size)
{
    QByteArray block(text);
    block.resize(size); // pads with NUL bytes like the agent's registers
    return block;
}

inline QMap<int, QVariant> deviceData(bool threePhase)
{
    QMap<int, QVariant> m;
    for (int id = 0; id <= 72; ++id)
        m.insert(id, 0);
    const int phases = threePhase ? 3 : 1;
    m[0] = 2;        // battery normal
    m[1] = 0;        // s on battery
    m[2] = threePhase ? 42 : 27;   // remaining min
    m[3] = 100;      // capacity %
    m[4] = threePhase ? 4080 : 2720; // 0.1 V
    m[5] = 12;       // 0.1 A charging
    m[6] = 25;       // degC
    m[7] = 3;        // mains failures
    m[8] = phases;
    m[9] = 230; m[10] = threePhase ? 231 : 0; m[11] = threePhase ? 229 : 0;
    m[12] = threePhase ? 118 : 38; m[13] = threePhase ? 121 : 0; m[14] = threePhase ? 115 : 0;
    m[15] = 500; m[16] = threePhase ? 500 : 0; m[17] = threePhase ? 499 : 0;
    m[18] = threePhase ? 2650 : 860; m[20] = threePhase ? 2710 : 0; m[22] = threePhase ? 2590 : 0;
    m[24] = 3;       // utility supply
    m[25] = 500;
    m[26] = phases;
    m[27] = 230; m[28] = threePhase ? 230 : 0; m[29] = threePhase ? 231 : 0;
    m[30] = threePhase ? 109 : 35; m[31] = threePhase ? 113 : 0; m[32] = threePhase ? 106 : 0;
    m[33] = threePhase ? 2450 : 805; m[35] = threePhase ? 2520 : 0; m[37] = threePhase ? 2390 : 0;
    m[39] = 35; m[40] = threePhase ? 36 : 0; m[41] = threePhase ? 34 : 0;
    m[42] = 500;
    m[43] = phases;
    m[44] = 229; m[45] = threePhase ? 230 : 0; m[46] = threePhase ? 228 : 0;
    m[47] = 0; m[48] = 0; m[49] = 0;
    m[56] = threePhase ? 400 : 230;  // rated input voltage
    m[57] = 500;                     // rated input frequency, 0.1 Hz
    m[58] = threePhase ? 400 : 230;  // rated output voltage
    m[59] = 500;                     // rated output frequency, 0.1 Hz
    m[60] = threePhase ? 20000 : 3000; // rated apparent power VA
    m[62] = threePhase ? 18000 : 2700; // rated active power W

    for (int alarm = 0; alarm <= 26; ++alarm)
        m.insert(2000 + alarm, 0);
    if (threePhase) {
        m[2016] = 1; // fan fault
        m[2023] = 1; // a test is in progress
    } else {
        m[2019] = 1; // last diagnostic test failed
    }

    m.insert(4000, identityBlock(threePhase ? "Series 33 20kVA" : "Tower 11 3kVA", 64));
    m.insert(4001, identityBlock("Example Power", 32));
    m.insert(4002, identityBlock(threePhase ? "server-room-ups" : "office-ups", 64));
    m.insert(4003, identityBlock(threePhase ? "rack A1-A4" : "file server", 64));
    m.insert(4004, identityBlock("UPS 2.11.04", 64));
    m.insert(4005, identityBlock("Agent 1.6.2", 64));
    m.insert(4006, identityBlock("Building 2, floor 1", 32));
    m.insert(4014, QStringLiteral("127.0.1.10"));
    return m;
}

// A map of values a broken or hostile agent could deliver: wrong QVariant
// types, negative and huge numbers, codes outside their lists.
inline QMap<int, QVariant> hostileData()
{
    QMap<int, QVariant> m;
    for (int id = 0; id <= 72; ++id)
        m.insert(id, (id % 3 == 0) ? QVariant(-1) : QVariant(65535));
    m[0] = QByteArray("\xff\xfe", 2);
    m[8] = 3;
    m[9] = QVariant(1e300);
    m[10] = QVariant(-1e300);
    m[11] = QVariant(std::numeric_limits<double>::quiet_NaN());
    m[24] = QStringLiteral("utility");
    m[26] = QVariant(QStringList{QStringLiteral("3")});
    m[43] = QVariant(-2147483647 - 1);
    m[62] = QVariant(qlonglong(1) << 40);
    for (int alarm = 0; alarm <= 60; ++alarm)
        m.insert(2000 + alarm, alarm % 2 ? QVariant(7) : QVariant(QStringLiteral("x")));
    m.insert(4000, QVariant(12345));
    m.insert(4001, QByteArray(200, '\xff'));
    m.insert(4002, QVariant());
    m.insert(4014, QVariant(3.5));
    m.insert(-5, 1);
    m.insert(99999, QByteArray("junk"));
    return m;
}

} // namespace ViewSampleData

#endif // VIEWSAMPLEDATA_H
