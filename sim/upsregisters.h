#ifndef UPSREGISTERS_H
#define UPSREGISTERS_H

#include <QtGlobal>

#include "upscommands.h"
#include "upsframes.h"
#include "upspoints.h"

// The agent's Modbus map, laid out from what the client reads: the data
// point ids are measurement register offsets, the codes those of the data
// points, the command registers those the client writes.
namespace UpsRegisters {

using namespace UpsPoint; // measurement n lives at MeasurementBase + n
using namespace UpsCode;

inline constexpr const UpsFrames::ReadRequest &MeasurementRead = UpsFrames::Requests[UpsFrames::Measurements];
inline constexpr const UpsFrames::ReadRequest &LastIdentityRead = UpsFrames::Requests[UpsFrames::IdentityB];
inline constexpr const UpsFrames::ReadRequest &AlarmRead = UpsFrames::Requests[UpsFrames::Alarms];

// Input registers 0x0101.. : measurement id n at MeasurementBase + n.
constexpr quint16 MeasurementBase = MeasurementRead.start;

// One input-register unit spans the measurements and the identity texts so
// that every read of the polling cycle falls inside it.
constexpr quint16 InputRegisterFirst = MeasurementBase;
constexpr quint16 InputRegisterLast = LastIdentityRead.start + LastIdentityRead.quantity - 1;
constexpr int InputRegisterCount = InputRegisterLast - InputRegisterFirst + 1;

// Discrete inputs 0x0101.. : bit n is alarm number n (UpsAlarm).
constexpr quint16 AlarmBase = AlarmRead.start;
constexpr int AlarmCount = AlarmRead.quantity;

// Holding registers 0..8 take the control commands (write single register).
constexpr int CommandRegisterCount = UpsCommandRegister::Count;

// The agent answers as Modbus server (unit) 1 only.
constexpr int UnitId = UpsFrames::UnitId;

} // namespace UpsRegisters

#endif // UPSREGISTERS_H
