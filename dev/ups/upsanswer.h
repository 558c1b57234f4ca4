#ifndef UPSANSWER_H
#define UPSANSWER_H

#include <QByteArray>
#include <QPair>
#include <QVector>

// One received buffer, decoded. Answers are not matched to the request sent:
// the byte count alone tells which block an answer carries, so a late answer
// is still read as what it is. Only the first answer of a buffer is decoded.
// A buffer shorter than its byte count promises reads as zero bytes past its
// end (registers, alarm bits) or as a shorter block (identity texts).
struct UpsAnswer
{
    enum class Kind {
        Dropped,      // shorter than 14 bytes: not even contact
        Measurements, // input registers 0x0101.., data points 0..72
        Identity,     // one of the two identity requests
        Alarms,       // discrete inputs 0x0101..
        Unknown,      // contact, but nothing to decode
    };

    Kind kind = Kind::Dropped;
    QVector<quint16> registers;               // Measurements: id n at index n
    QByteArray rawData;                       // Measurements: the data bytes as received
    QVector<QPair<int, QByteArray>> identity; // Identity: data point id and raw block
    quint64 alarmBits = 0;                    // Alarms: bit n = alarm number n (0..63)

    bool accepted() const { return kind != Kind::Dropped; }
    // State 0/1 of an alarm number; 0 beyond the bits an answer carries.
    int alarm(int number) const;

    static UpsAnswer decode(const QByteArray &buffer);
};

#endif // UPSANSWER_H
