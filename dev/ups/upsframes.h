#ifndef UPSFRAMES_H
#define UPSFRAMES_H

#include <QByteArray>
#include <QtGlobal>

// Modbus/TCP frames between the client and the UPS agent. Every request is
// 12 bytes: MBAP header with transaction id 0 and unit id 1 (both fixed),
// then function, address and quantity or value. Answers carry their data
// from byte 9, after the byte count at byte 8.
namespace UpsFrames {

constexpr int FrameSize = 12;
constexpr quint8 UnitId = 0x01;
constexpr quint8 ReadDiscreteInputs = 0x02;
constexpr quint8 ReadInputRegisters = 0x04;
constexpr quint8 WriteSingleRegister = 0x06;

constexpr int ByteCountOffset = 8;
constexpr int DataOffset = 9;
// Shorter answers (exception answers are 9 bytes) are dropped.
constexpr int MinAnswerSize = 14;

struct ReadRequest
{
    quint8 function;
    quint16 start;
    quint16 quantity;

    // The byte count of the answer, which alone tells answers apart.
    constexpr int answerBytes() const
    {
        return function == ReadDiscreteInputs ? (quantity + 7) / 8 : 2 * quantity;
    }
};

// The rotation, one request per tick.
enum Request : int { IdentityA = 0, IdentityB = 1, Measurements = 2, Alarms = 3, RequestCount = 4 };
inline constexpr ReadRequest Requests[RequestCount] = {
    {ReadInputRegisters, 0x0201, 0x0070},
    {ReadInputRegisters, 0x0271, 0x0050},
    {ReadInputRegisters, 0x0101, 0x0049}, // data points 0..72
    {ReadDiscreteInputs, 0x0101, 0x0041}, // bit n = alarm number n
};

// Identity texts: data point id, first register and length in bytes, in
// register order across the two identity requests.
struct IdentityBlock
{
    int id;
    quint16 firstRegister;
    int bytes;
};
constexpr int IdentityBlockCount = 7;
extern const IdentityBlock IdentityBlocks[IdentityBlockCount];

// The request of the rotation at index (clamped to 0..3).
QByteArray readRequest(int index);
QByteArray writeRequest(quint8 reg, quint16 value);

} // namespace UpsFrames

#endif // UPSFRAMES_H
