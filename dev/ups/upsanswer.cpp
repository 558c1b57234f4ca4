#include "upsanswer.h"

#include "upsframes.h"

namespace {

// Bytes of the alarm block that carry alarm numbers; the ninth is not used.
constexpr int kAlarmBytes = 8;

quint8 byteAt(const QByteArray &buffer, int index)
{
    return index >= 0 && index < buffer.size() ? quint8(buffer.at(index)) : 0;
}

quint16 registerAt(const QByteArray &buffer, int n)
{
    const int at = UpsFrames::DataOffset + 2 * n;
    return quint16((byteAt(buffer, at) << 8) | byteAt(buffer, at + 1));
}

int requestAnswering(quint8 byteCount)
{
    for (int i = 0; i < UpsFrames::RequestCount; ++i) {
        if (UpsFrames::Requests[i].answerBytes() == byteCount)
            return i;
    }
    return -1;
}

void decodeMeasurements(const QByteArray &buffer, UpsAnswer &answer)
{
    const UpsFrames::ReadRequest &request = UpsFrames::Requests[UpsFrames::Measurements];
    // Registers of 32-bit pairs too: each id carries its own 16 bits.
    answer.registers.resize(request.quantity);
    for (int n = 0; n < request.quantity; ++n)
        answer.registers[n] = registerAt(buffer, n);
    answer.rawData = buffer.mid(UpsFrames::DataOffset, request.answerBytes());
}

void decodeIdentity(const QByteArray &buffer, const UpsFrames::ReadRequest &request, UpsAnswer &answer)
{
    for (const UpsFrames::IdentityBlock &block : UpsFrames::IdentityBlocks) {
        if (block.firstRegister < request.start || block.firstRegister >= request.start + request.quantity)
            continue;
        const int offset = UpsFrames::DataOffset + 2 * (block.firstRegister - request.start);
        // Kept as raw bytes, trailing NUL or blanks included.
        answer.identity.append({block.id, buffer.mid(offset, block.bytes)});
    }
}

void decodeAlarms(const QByteArray &buffer, UpsAnswer &answer)
{
    for (int j = 0; j < kAlarmBytes; ++j)
        answer.alarmBits |= quint64(byteAt(buffer, UpsFrames::DataOffset + j)) << (8 * j);
}

} // namespace

int UpsAnswer::alarm(int number) const
{
    return number >= 0 && number < 8 * kAlarmBytes ? int((alarmBits >> number) & 1) : 0;
}

UpsAnswer UpsAnswer::decode(const QByteArray &buffer)
{
    UpsAnswer answer;
    if (buffer.size() < UpsFrames::MinAnswerSize)
        return answer;
    const int request = requestAnswering(byteAt(buffer, UpsFrames::ByteCountOffset));
    switch (request) {
    case UpsFrames::Measurements:
        answer.kind = Kind::Measurements;
        decodeMeasurements(buffer, answer);
        break;
    case UpsFrames::IdentityA:
    case UpsFrames::IdentityB:
        answer.kind = Kind::Identity;
        decodeIdentity(buffer, UpsFrames::Requests[request], answer);
        break;
    case UpsFrames::Alarms:
        answer.kind = Kind::Alarms;
        decodeAlarms(buffer, answer);
        break;
    default:
        answer.kind = Kind::Unknown;
        break;
    }
    return answer;
}
