#include "registerimage.h"

#include "upsframes.h"
#include "upspoints.h"
#include "upssimulator.h"

namespace {

constexpr int kAddressSpace = 0x10000;
constexpr int kMaxReadRegisters = 125; // Modbus limits of one read
constexpr int kMaxReadBits = 2000;
constexpr quint8 kIllegalFunction = 0x01;
constexpr quint8 kIllegalAddress = 0x02;
constexpr quint8 kExceptionFlag = 0x80;
constexpr int kHeadSize = 7; // MBAP header up to and including the unit id

void putWord(QByteArray *frame, int at, quint16 value)
{
    (*frame)[at] = char(value >> 8);
    (*frame)[at + 1] = char(value & 0xFF);
}

quint16 word(const QByteArray &frame, int at)
{
    return quint16(quint8(frame.at(at)) << 8 | quint8(frame.at(at + 1)));
}

// MBAP header of an answer with pduSize bytes after the unit id.
QByteArray answerHead(const QByteArray &head, int pduSize)
{
    QByteArray frame = head;
    putWord(&frame, 4, quint16(pduSize + 1));
    return frame;
}

QByteArray exception(const QByteArray &head, quint8 function, quint8 code)
{
    QByteArray frame = answerHead(head, 2);
    frame.append(char(function | kExceptionFlag)).append(char(code));
    return frame;
}

bool inRange(quint16 start, quint16 quantity, int max)
{
    return quantity >= 1 && quantity <= max && int(start) + quantity <= kAddressSpace;
}

} // namespace

RegisterImage::RegisterImage()
    : m_registers(kAddressSpace, 0), m_bits(kAddressSpace, false)
{
    const quint16 measurementBase = UpsFrames::Requests[UpsFrames::Measurements].start;
    const quint16 alarmBase = UpsFrames::Requests[UpsFrames::Alarms].start;
    const QMap<int, QVariant> image = UpsSimulator::profileImage(UpsSimulator::Profile::Single);
    for (auto it = image.cbegin(); it != image.cend(); ++it) {
        if (it.key() < UpsPoint::AlarmFirst)
            m_registers[measurementBase + it.key()] = quint16(it.value().toInt());
        else if (it.key() < UpsPoint::Model)
            m_bits[alarmBase + it.key() - UpsPoint::AlarmFirst] = it.value().toInt() != 0;
    }
    for (const UpsFrames::IdentityBlock &block : UpsFrames::IdentityBlocks) {
        const QByteArray bytes = image.value(block.id).toByteArray().leftJustified(block.bytes, '\0', true);
        for (int i = 0; i + 1 < bytes.size(); i += 2)
            m_registers[block.firstRegister + i / 2] = word(bytes, i);
    }
}

QByteArray RegisterImage::answer(const QByteArray &frame) const
{
    const QByteArray head = frame.left(kHeadSize);
    const quint8 function = quint8(frame.at(kHeadSize));
    if (frame.size() < UpsFrames::FrameSize)
        return exception(head, function, kIllegalFunction);
    const quint16 start = word(frame, kHeadSize + 1);
    const quint16 quantity = word(frame, kHeadSize + 3);
    switch (function) {
    case UpsFrames::ReadInputRegisters:
        return inRange(start, quantity, kMaxReadRegisters) ? readRegisters(head, start, quantity)
                                                           : exception(head, function, kIllegalAddress);
    case UpsFrames::ReadDiscreteInputs:
        return inRange(start, quantity, kMaxReadBits) ? readBits(head, start, quantity)
                                                      : exception(head, function, kIllegalAddress);
    case UpsFrames::WriteSingleRegister:
        return frame.left(UpsFrames::FrameSize);
    default:
        return exception(head, function, kIllegalFunction);
    }
}

QByteArray RegisterImage::readRegisters(const QByteArray &head, quint16 start, quint16 quantity) const
{
    const int count = 2 * quantity;
    QByteArray frame = answerHead(head, 2 + count);
    frame.append(char(UpsFrames::ReadInputRegisters)).append(char(count));
    frame.resize(frame.size() + count);
    for (int i = 0; i < quantity; ++i)
        putWord(&frame, UpsFrames::DataOffset + 2 * i, m_registers.at(start + i));
    return frame;
}

QByteArray RegisterImage::readBits(const QByteArray &head, quint16 start, quint16 quantity) const
{
    const int count = (quantity + 7) / 8;
    QByteArray frame = answerHead(head, 2 + count);
    frame.append(char(UpsFrames::ReadDiscreteInputs)).append(char(count));
    frame.append(QByteArray(count, '\0'));
    for (int i = 0; i < quantity; ++i) {
        if (m_bits.at(start + i))
            frame[UpsFrames::DataOffset + i / 8] = char(frame.at(UpsFrames::DataOffset + i / 8) | (1 << (i % 8)));
    }
    return frame;
}
