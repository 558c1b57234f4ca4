#ifndef UPSREGISTERS_H
#define UPSREGISTERS_H

#include <QtGlobal>

// Register layout of the agent's Modbus map and the codes it reports.
namespace UpsRegisters {

// Input registers 0x0101.. : measurement id n lives at MeasurementBase + n.
constexpr quint16 MeasurementBase = 0x0101;
constexpr int MeasurementCount = 73;

// Identity text blocks; one input-register unit spans the measurements and
// the texts so that every read of the polling cycle falls inside it.
constexpr quint16 InputRegisterFirst = 0x0101;
constexpr quint16 InputRegisterLast = 0x02C0;
constexpr int InputRegisterCount = InputRegisterLast - InputRegisterFirst + 1;

// Discrete inputs 0x0101.. : bit n is alarm number n.
constexpr quint16 AlarmBase = 0x0101;
constexpr int AlarmCount = 65;

// Holding registers 0..8 take the control commands (write single register).
constexpr int CommandRegisterCount = 9;

// The agent answers as Modbus server (unit) 1 only.
constexpr int UnitId = 1;

// Measurement ids (offset from MeasurementBase).
enum Measurement {
    BatteryStatus = 0,
    SecondsOnBattery = 1,
    RemainingMinutes = 2,
    BatteryCapacity = 3,
    BatteryVoltage = 4,      // 0.1 V
    BatteryCurrent = 5,      // 0.1 A, two's complement, negative = discharge
    BatteryTemperature = 6,  // degC
    MainsFailures = 7,
    InputPhases = 8,
    InputVoltage = 9,        // 9..11, V
    InputCurrent = 12,       // 12..14, 0.1 A
    InputFrequency = 15,     // 15..17, 0.1 Hz
    InputPower = 18,         // 18/19, 20/21, 22/23: 32-bit W
    OutputSource = 24,
    OutputFrequency = 25,    // 0.1 Hz
    OutputPhases = 26,
    OutputVoltage = 27,      // 27..29, V
    OutputCurrent = 30,      // 30..32, 0.1 A
    OutputPower = 33,        // 33/34, 35/36, 37/38: 32-bit W
    OutputLoad = 39,         // 39..41, %
    BypassFrequency = 42,    // 0.1 Hz
    BypassPhases = 43,
    BypassVoltage = 44,      // 44..46, V
    BypassCurrent = 47,      // 47..49, 0.1 A
    BypassPower = 50,        // 50/51, 52/53, 54/55: 32-bit W
    RatedInputVoltage = 56,  // V
    RatedInputFrequency = 57,  // 0.1 Hz
    RatedOutputVoltage = 58,   // V
    RatedOutputFrequency = 59, // 0.1 Hz
    RatedApparentPower = 60,   // 60/61: 32-bit VA
    RatedActivePower = 62,     // 62/63: 32-bit W
    RatedBatteryMinutes = 64,  // run time at full load, min
    BuzzerState = 65,          // BuzzerDisabled / BuzzerEnabled
    UndervoltagePoint = 66,    // V
    OvervoltagePoint = 67      // V
};

enum BatteryStatusCode { BatteryUnknown = 1, BatteryNormal = 2, BatteryLow = 3, BatteryDepleted = 4 };

enum OutputSourceCode {
    SourceOther = 1,
    SourceNone = 2,
    SourceUtility = 3,
    SourceBypass = 4,
    SourceBattery = 5,
    SourceBooster = 6,
    SourceReducer = 7
};

enum BuzzerCode { BuzzerDisabled = 1, BuzzerEnabled = 2 };

// Alarm numbers the model raises and clears itself.
enum Alarm {
    AlarmOnBattery = 2,
    AlarmBatteryLow = 3,
    AlarmBatteryEod = 4,
    AlarmInputBad = 6,
    AlarmOnBypass = 9,
    AlarmOutputOffAsRequested = 11,
    AlarmSystemOffAsRequested = 12,
    AlarmOutputOff = 14,
    AlarmSystemOff = 15,
    AlarmDiagnosticFailed = 19,
    AlarmShutdownPending = 21,
    AlarmShutdownImminent = 22,
    AlarmTestInProgress = 23,
    AlarmBatteryDischarge = 26
};

// Holding registers of the control commands.
enum Command {
    CommandTimeSet = 0,
    CommandSelfTest = 1,
    CommandDischargeToLow = 2,
    CommandBuzzer = 3,
    CommandCancelTest = 4,
    CommandCancelShutdown = 5,
    CommandDischargeMinutes = 6,
    CommandShutdown = 7,
    CommandStandby = 8
};

} // namespace UpsRegisters

#endif // UPSREGISTERS_H
