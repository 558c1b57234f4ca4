#ifndef EVENTTYPES_H
#define EVENTTYPES_H

// Numbers carried as the type of postDEvent, and the control ids a view asks
// for. The host routes requests in the control id range to the client.
namespace EventType {

constexpr int ControlFirst = 1003;
constexpr int ControlLast = 1014;

constexpr int SelfTest = 1003;
constexpr int Discharge = 1004;
constexpr int DischargeToLow = 1005;
constexpr int CancelTest = 1006;
constexpr int Shutdown = 1007;
constexpr int Standby = 1008;
constexpr int TimeSet = 1011;
constexpr int CancelShutdown = 1013;
constexpr int Buzzer = 1014;

constexpr int Restored = 1040;
constexpr int Lost = 1041;
constexpr int CommandResult = 1042;
constexpr int State = 2001;
constexpr int Alarm = 2006;
constexpr int Decoded = 2007;
constexpr int InputFault = 2009;
constexpr int BatteryLow = 2010;

inline bool isControlRequest(int type)
{
    return type >= ControlFirst && type <= ControlLast;
}

inline bool isAlarmEvent(int type)
{
    return type == Alarm || type == InputFault || type == BatteryLow;
}

} // namespace EventType

// Data point ids the host reads from a client's data map.
namespace DataPoint {

constexpr int BatteryCapacity = 3;
constexpr int InputPhases = 8;
constexpr int InputVoltage = 9;   // 9, 10, 11 for R, S, T
constexpr int OutputPhases = 26;
constexpr int OutputVoltage = 27; // 27, 28, 29 for R, S, T
constexpr int OutputLoad = 39;
constexpr int AlarmFirst = 2000;  // 2000 + alarm number
constexpr int AlarmLast = 2026;
constexpr int Model = 4000;
constexpr int ThreePhases = 3;

} // namespace DataPoint

#endif // EVENTTYPES_H
