#include "upspoints.h"

#include <QtGlobal>
#include <iterator>

namespace UpsPoints {

namespace {

using G = PhaseGroup;
using C = CodeList;

// id, title, R/S/T title,
//  divisor, unit, decimals, phase group, stride, signed, codes, text
const Info kPoints[] = {
    {UpsPoint::BatteryStatus, QT_TRANSLATE_NOOP("OrvekFont", "Battery state"),
     nullptr, 1, "", 0, G::None, 0, false, C::BatteryStatus, false},
    {UpsPoint::SecondsOnBattery, QT_TRANSLATE_NOOP("OrvekFont", "Time on battery(s)"),
     nullptr, 1, "s", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RemainingMinutes, QT_TRANSLATE_NOOP("OrvekFont", "Remaining battery time(Min)"),
     nullptr, 1, "min", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BatteryCapacity, QT_TRANSLATE_NOOP("OrvekFont", "Remaining battery capacity(%)"),
     nullptr, 1, "%", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BatteryVoltage, QT_TRANSLATE_NOOP("OrvekFont", "Battery voltage(V)"),
     nullptr, 10, "V", 1, G::None, 0, false, C::None, false},
    {UpsPoint::BatteryCurrent, QT_TRANSLATE_NOOP("OrvekFont", "Battery current(A)"),
     nullptr, 10, "A", 1, G::None, 0, true, C::None, false},
    {UpsPoint::BatteryTemperature, QT_TRANSLATE_NOOP("OrvekFont", "Battery temperature(C)"),
     nullptr, 1, "\u00B0C", 0, G::None, 0, false, C::None, false},
    {UpsPoint::MainsFailures, QT_TRANSLATE_NOOP("OrvekFont", "Number of mains failure"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::InputPhases, nullptr, nullptr, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::InputVoltage, QT_TRANSLATE_NOOP("OrvekFont", "Input voltage(V)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Input voltage R/S/T(V)"),
     1, "V", 0, G::Input, 1, false, C::None, false},
    {UpsPoint::InputCurrent, QT_TRANSLATE_NOOP("OrvekFont", "Input current(A)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Input current R/S/T(A)"),
     10, "A", 1, G::Input, 1, false, C::None, false},
    {UpsPoint::InputFrequency, QT_TRANSLATE_NOOP("OrvekFont", "Input frequency(Hz)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Input frequency R/S/T(Hz)"),
     10, "Hz", 1, G::Input, 1, false, C::None, false},
    {UpsPoint::InputPower, QT_TRANSLATE_NOOP("OrvekFont", "Input power(W)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Input power R/S/T(W)"),
     1, "W", 0, G::Input, 2, false, C::None, false},
    {UpsPoint::OutputSource, QT_TRANSLATE_NOOP("OrvekFont", "Output mode"),
     nullptr, 1, "", 0, G::None, 0, false, C::OutputSource, false},
    {UpsPoint::OutputFrequency, QT_TRANSLATE_NOOP("OrvekFont", "Output frequency(Hz)"),
     nullptr, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::OutputPhases, nullptr, nullptr, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::OutputVoltage, QT_TRANSLATE_NOOP("OrvekFont", "Output voltage(V)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Output voltage R/S/T(V)"),
     1, "V", 0, G::Output, 1, false, C::None, false},
    {UpsPoint::OutputCurrent, QT_TRANSLATE_NOOP("OrvekFont", "Output current(A)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Output current R/S/T(A)"),
     10, "A", 1, G::Output, 1, false, C::None, false},
    {UpsPoint::OutputPower, QT_TRANSLATE_NOOP("OrvekFont", "Output power(W)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Output power R/S/T(W)"),
     1, "W", 0, G::Output, 2, false, C::None, false},
    {UpsPoint::OutputLoad, QT_TRANSLATE_NOOP("OrvekFont", "Output load(%)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Output load R/S/T(%)"),
     1, "%", 0, G::Output, 1, false, C::None, false},
    {UpsPoint::BypassFrequency, QT_TRANSLATE_NOOP("OrvekFont", "Bypass frequency(Hz)"),
     nullptr, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::BypassPhases, nullptr, nullptr, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BypassVoltage, QT_TRANSLATE_NOOP("OrvekFont", "Bypass voltage(V)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Bypass voltage R/S/T(V)"),
     1, "V", 0, G::Bypass, 1, false, C::None, false},
    {UpsPoint::BypassCurrent, QT_TRANSLATE_NOOP("OrvekFont", "Bypass current(A)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Bypass current R/S/T(A)"),
     10, "A", 1, G::Bypass, 1, false, C::None, false},
    {UpsPoint::BypassPower, QT_TRANSLATE_NOOP("OrvekFont", "Bypass power(W)"),
     QT_TRANSLATE_NOOP("OrvekFont", "Bypass power R/S/T(W)"),
     1, "W", 0, G::Bypass, 2, false, C::None, false},
    {UpsPoint::RatedInputVoltage, QT_TRANSLATE_NOOP("OrvekFont", "Rated input voltage(V)"),
     nullptr, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedInputFrequency, QT_TRANSLATE_NOOP("OrvekFont", "Rated input frequency(Hz)"),
     nullptr, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::RatedOutputVoltage, QT_TRANSLATE_NOOP("OrvekFont", "Rated output voltage(V)"),
     nullptr, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedOutputFrequency, QT_TRANSLATE_NOOP("OrvekFont", "Rated output frequency(Hz)"),
     nullptr, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::RatedApparentPower, QT_TRANSLATE_NOOP("OrvekFont", "Rated apparent power(VA)"),
     nullptr, 1, "VA", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedActivePower, QT_TRANSLATE_NOOP("OrvekFont", "Rated active power(W)"),
     nullptr, 1, "W", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedBatteryMinutes, QT_TRANSLATE_NOOP("OrvekFont", "Rated battery-powered time(min)"),
     nullptr, 1, "min", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BuzzerState, QT_TRANSLATE_NOOP("OrvekFont", "Buzzer state"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::UndervoltagePoint, QT_TRANSLATE_NOOP("OrvekFont", "Undervoltage point(V)"),
     nullptr, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::OvervoltagePoint, QT_TRANSLATE_NOOP("OrvekFont", "Overvoltage point(V)"),
     nullptr, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::Model, QT_TRANSLATE_NOOP("OrvekFont", "UPS model"), nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::Manufacturer, QT_TRANSLATE_NOOP("OrvekFont", "Manufacturer name"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::SystemName, QT_TRANSLATE_NOOP("OrvekFont", "System name"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AttachedDevices, QT_TRANSLATE_NOOP("OrvekFont", "UPS ident attached devices"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::UpsSoftware, QT_TRANSLATE_NOOP("OrvekFont", "UPS software version"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AgentSoftware, QT_TRANSLATE_NOOP("OrvekFont", "Agent software version"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AgentLocation, QT_TRANSLATE_NOOP("OrvekFont", "Agent location"),
     nullptr, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AgentAddress, nullptr, nullptr, 1, "", 0, G::None, 0, false, C::None, true},
};

// Code n names entry n - 1.
const char *const kBatteryStatusTexts[] = {
    QT_TRANSLATE_NOOP("OrvekFont", "Unknown"),
    QT_TRANSLATE_NOOP("OrvekFont", "Normal"),
    QT_TRANSLATE_NOOP("OrvekFont", "Low"),
    QT_TRANSLATE_NOOP("OrvekFont", "Depleted"),
};
const char *const kOutputSourceTexts[] = {
    QT_TRANSLATE_NOOP("OrvekFont", "Other supply"),
    QT_TRANSLATE_NOOP("OrvekFont", "None supply"),
    QT_TRANSLATE_NOOP("OrvekFont", "Utility supply"),
    QT_TRANSLATE_NOOP("OrvekFont", "Bypass supply"),
    QT_TRANSLATE_NOOP("OrvekFont", "Battery supply"),
    QT_TRANSLATE_NOOP("OrvekFont", "Booster supply"),
    QT_TRANSLATE_NOOP("OrvekFont", "Reducer supply"),
};

// Source texts marked in the diagram's context; the detail page translates
// the same texts in its own.
const char *const kBatteryStateTexts[] = {
    QT_TRANSLATE_NOOP("Energyline", "Unknown"),
    QT_TRANSLATE_NOOP("Energyline", "Normal"),
    QT_TRANSLATE_NOOP("Energyline", "Low"),
    QT_TRANSLATE_NOOP("Energyline", "Depleted"),
    QT_TRANSLATE_NOOP("Energyline", "Selftest"),
    QT_TRANSLATE_NOOP("Energyline", "Boost"),
    QT_TRANSLATE_NOOP("Energyline", "Floating"),
    QT_TRANSLATE_NOOP("Energyline", "Discharge"),
    QT_TRANSLATE_NOOP("Energyline", "Normal"),
};

const Info kPlainInteger = {-1, nullptr, nullptr, 1, "", 0, G::None, 0, false, C::None, false};

const Info *find(int id)
{
    for (const Info &point : kPoints) {
        if (point.id == id)
            return &point;
    }
    return nullptr;
}

} // namespace

const Info &info(int id)
{
    const Info *point = find(id);
    return point ? *point : kPlainInteger;
}

bool isKnown(int id)
{
    return find(id) != nullptr;
}

int phaseId(int firstId, int phase)
{
    return firstId + phase * qMax(1, info(firstId).phaseStride);
}

int phaseCountId(PhaseGroup group)
{
    switch (group) {
    case PhaseGroup::Input:
        return UpsPoint::InputPhases;
    case PhaseGroup::Output:
        return UpsPoint::OutputPhases;
    case PhaseGroup::Bypass:
        return UpsPoint::BypassPhases;
    case PhaseGroup::None:
        break;
    }
    return -1;
}

const char *const *codeTexts(CodeList list, int *count)
{
    switch (list) {
    case CodeList::BatteryStatus:
        *count = int(std::size(kBatteryStatusTexts));
        return kBatteryStatusTexts;
    case CodeList::OutputSource:
        *count = int(std::size(kOutputSourceTexts));
        return kOutputSourceTexts;
    case CodeList::BatteryState:
        *count = int(std::size(kBatteryStateTexts));
        return kBatteryStateTexts;
    case CodeList::None:
        break;
    }
    *count = 0;
    return nullptr;
}

} // namespace UpsPoints
