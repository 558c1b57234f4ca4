#include "upsframes.h"

#include "upspoints.h"

namespace UpsFrames {

const IdentityBlock IdentityBlocks[IdentityBlockCount] = {
    {UpsPoint::Manufacturer, 0x0201, 32},
    {UpsPoint::Model, 0x0211, 64},
    {UpsPoint::UpsSoftware, 0x0231, 64},
    {UpsPoint::AttachedDevices, 0x0251, 64},
    {UpsPoint::AgentSoftware, 0x0271, 64},
    {UpsPoint::SystemName, 0x0291, 64},
    {UpsPoint::AgentLocation, 0x02B1, 32},
};

namespace {

QByteArray frame(quint8 function, quint16 address, quint16 word)
{
    QByteArray bytes(FrameSize, '\0');
    bytes[5] = 0x06; // length of the rest
    bytes[6] = char(UnitId);
    bytes[7] = char(function);
    bytes[8] = char(address >> 8);
    bytes[9] = char(address & 0xFF);
    bytes[10] = char(word >> 8);
    bytes[11] = char(word & 0xFF);
    return bytes;
}

} // namespace

QByteArray readRequest(int index)
{
    const ReadRequest &r = Requests[qBound(0, index, RequestCount - 1)];
    return frame(r.function, r.start, r.quantity);
}

QByteArray writeRequest(quint8 reg, quint16 value)
{
    return frame(WriteSingleRegister, reg, value);
}

} // namespace UpsFrames
