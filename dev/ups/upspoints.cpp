#include "upspoints.h"

#include <QtGlobal>

namespace UpsPoints {

namespace {

using G = PhaseGroup;
using C = CodeList;

// id, divisor, unit, decimals, phase group, stride, signed, codes, text
const Info kPoints[] = {
    {UpsPoint::BatteryStatus, 1, "", 0, G::None, 0, false, C::BatteryStatus, false},
    {UpsPoint::SecondsOnBattery, 1, "s", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RemainingMinutes, 1, "min", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BatteryCapacity, 1, "%", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BatteryVoltage, 10, "V", 1, G::None, 0, false, C::None, false},
    {UpsPoint::BatteryCurrent, 10, "A", 1, G::None, 0, true, C::None, false},
    {UpsPoint::BatteryTemperature, 1, "\u00B0C", 0, G::None, 0, false, C::None, false},
    {UpsPoint::MainsFailures, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::InputPhases, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::InputVoltage, 1, "V", 0, G::Input, 1, false, C::None, false},
    {UpsPoint::InputCurrent, 10, "A", 1, G::Input, 1, false, C::None, false},
    {UpsPoint::InputFrequency, 10, "Hz", 1, G::Input, 1, false, C::None, false},
    {UpsPoint::InputPower, 1, "W", 0, G::Input, 2, false, C::None, false},
    {UpsPoint::OutputSource, 1, "", 0, G::None, 0, false, C::OutputSource, false},
    {UpsPoint::OutputFrequency, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::OutputPhases, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::OutputVoltage, 1, "V", 0, G::Output, 1, false, C::None, false},
    {UpsPoint::OutputCurrent, 10, "A", 1, G::Output, 1, false, C::None, false},
    {UpsPoint::OutputPower, 1, "W", 0, G::Output, 2, false, C::None, false},
    {UpsPoint::OutputLoad, 1, "%", 0, G::Output, 1, false, C::None, false},
    {UpsPoint::BypassFrequency, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::BypassPhases, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BypassVoltage, 1, "V", 0, G::Bypass, 1, false, C::None, false},
    {UpsPoint::BypassCurrent, 10, "A", 1, G::Bypass, 1, false, C::None, false},
    {UpsPoint::BypassPower, 1, "W", 0, G::Bypass, 2, false, C::None, false},
    {UpsPoint::RatedInputVoltage, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedInputFrequency, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::RatedOutputVoltage, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedOutputFrequency, 10, "Hz", 1, G::None, 0, false, C::None, false},
    {UpsPoint::RatedApparentPower, 1, "VA", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedActivePower, 1, "W", 0, G::None, 0, false, C::None, false},
    {UpsPoint::RatedBatteryMinutes, 1, "min", 0, G::None, 0, false, C::None, false},
    {UpsPoint::BuzzerState, 1, "", 0, G::None, 0, false, C::None, false},
    {UpsPoint::UndervoltagePoint, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::OvervoltagePoint, 1, "V", 0, G::None, 0, false, C::None, false},
    {UpsPoint::Model, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::Manufacturer, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::SystemName, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AttachedDevices, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::UpsSoftware, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AgentSoftware, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AgentLocation, 1, "", 0, G::None, 0, false, C::None, true},
    {UpsPoint::AgentAddress, 1, "", 0, G::None, 0, false, C::None, true},
};

const Info kPlainInteger = {-1, 1, "", 0, G::None, 0, false, C::None, false};

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

UpsCatalogue::List codeList(CodeList list)
{
    switch (list) {
    case CodeList::BatteryStatus:
        return UpsCatalogue::List::BatteryStatus;
    case CodeList::OutputSource:
        return UpsCatalogue::List::OutputSource;
    case CodeList::BatteryState:
    case CodeList::None:
        break;
    }
    return UpsCatalogue::List::BatteryState;
}

const char *const *codeTexts(CodeList list, int *count)
{
    if (list == CodeList::None) {
        *count = 0;
        return nullptr;
    }
    *count = UpsCatalogue::codeCount(codeList(list));
    return UpsCatalogue::codeSources(codeList(list));
}

} // namespace UpsPoints
