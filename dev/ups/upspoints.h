#ifndef UPSPOINTS_H
#define UPSPOINTS_H

#include "upscatalogue.h"

// The data points of a UPS as the client stores them in its DataPointMap:
// ids 0..72 are the input registers from 0x0101 (unsigned 16-bit), 2000 + n
// the state of alarm n, 4000..4006 the identity blocks (raw bytes), 4014 the
// agent's address. The table says how each value reads: scale, unit,
// decimals and which phase count lays it out.

namespace UpsPoint {

enum Id : int {
    // Battery
    BatteryStatus = 0,       // code, see UpsPoints::CodeList
    SecondsOnBattery = 1,
    RemainingMinutes = 2,
    BatteryCapacity = 3,
    BatteryVoltage = 4,
    BatteryCurrent = 5,      // signed, stored unsigned; negative while discharging
    BatteryTemperature = 6,
    MainsFailures = 7,
    // Input; phases R, S, T at consecutive ids, power in 32-bit pairs (18/19, 20/21, 22/23)
    InputPhases = 8,
    InputVoltage = 9,
    InputCurrent = 12,
    InputFrequency = 15,
    InputPower = 18,
    // Output
    OutputSource = 24,       // code
    OutputFrequency = 25,
    OutputPhases = 26,
    OutputVoltage = 27,
    OutputCurrent = 30,
    OutputPower = 33,        // 32-bit pairs from 33
    OutputLoad = 39,
    // Bypass
    BypassFrequency = 42,
    BypassPhases = 43,
    BypassVoltage = 44,
    BypassCurrent = 47,
    BypassPower = 50,        // 32-bit pairs from 50
    // Ratings and settings
    RatedInputVoltage = 56,
    RatedInputFrequency = 57,
    RatedOutputVoltage = 58,
    RatedOutputFrequency = 59,
    RatedApparentPower = 60, // 32-bit pair 60/61
    RatedActivePower = 62,   // 32-bit pair 62/63
    RatedBatteryMinutes = 64,
    BuzzerState = 65,        // code, UpsCode::BuzzerCode
    UndervoltagePoint = 66,
    OvervoltagePoint = 67,

    AlarmFirst = 2000,       // + alarm number

    // Identity blocks, raw bytes
    Model = 4000,
    Manufacturer = 4001,
    SystemName = 4002,
    AttachedDevices = 4003,
    UpsSoftware = 4004,
    AgentSoftware = 4005,
    AgentLocation = 4006,
    AgentAddress = 4014,     // the configured address, a QString
};

constexpr int MeasurementCount = 73; // ids 0..72
// A phase count of this value lays a value out as R/S/T.
constexpr int ThreePhases = 3;

} // namespace UpsPoint

// Codes carried by data points; code n names text n - 1 of its list.
namespace UpsCode {

enum BatteryStatusCode : int { BatteryUnknown = 1, BatteryNormal = 2, BatteryLow = 3, BatteryDepleted = 4 };

// Further battery codes some devices report, named by CodeList::BatteryState.
enum BatteryStateCode : int {
    BatterySelfTest = 5,
    BatteryBoostCharging = 6,
    BatteryFloatCharging = 7,
    BatteryDischarging = 8,
    BatteryNormalAgain = 9, // a second "Normal"
};
// List index of "Normal" in CodeList::BatteryState, shown for codes outside it.
constexpr int BatteryStateNormalIndex = 1;

enum OutputSourceCode : int {
    SourceOther = 1,
    SourceNone = 2,
    SourceUtility = 3,
    SourceBypass = 4,
    SourceBattery = 5,
    SourceBooster = 6,
    SourceReducer = 7,
};

enum BuzzerCode : int { BuzzerDisabled = 1, BuzzerEnabled = 2 };

} // namespace UpsCode

namespace UpsPoints {

// Which phase-count point decides between one value and R/S/T.
enum class PhaseGroup { None, Input, Output, Bypass };
// BatteryState: the battery status as the diagram and the detail page name
// it, codes 1..9 (UpsCode::BatteryStateCode beyond the four status codes).
enum class CodeList { None, BatteryStatus, OutputSource, BatteryState };

struct Info
{
    int id; // titles: UpsCatalogue
    int divisor;          // stored units per shown unit: 10 for tenths
    const char *unit;     // UTF-8, not translated
    int decimals;
    PhaseGroup group;
    int phaseStride;      // id distance from one phase to the next
    bool isSigned;        // a signed 16-bit quantity stored unsigned
    CodeList codes;
    bool isText;          // identity blocks and the agent's address
};

// The entry of id; an unknown id reads as a plain integer without unit.
const Info &info(int id);
bool isKnown(int id);
// Id of phase 0..2 of the value whose first phase is firstId.
int phaseId(int firstId, int phase);
// The phase-count point of a group; -1 for PhaseGroup::None.
int phaseCountId(PhaseGroup group);

// English source texts of a code list in list order and their number; each
// class translates them in its own context (UpsCatalogue marks them there).
const char *const *codeTexts(CodeList list, int *count);
UpsCatalogue::List codeList(CodeList list);
constexpr char CodeContext[] = "OrvekFont";

} // namespace UpsPoints

#endif // UPSPOINTS_H
