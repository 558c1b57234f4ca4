#ifndef UPSALARMS_H
#define UPSALARMS_H

#include <QStringList>

// Alarm numbers (bit n of the discrete inputs from 0x0101) and the event
// texts that name them. The event text list holds the raised texts of 54
// alarm slots followed by the matching cleared texts; the client evaluates
// the first quarter of that list as alarm numbers.

namespace UpsAlarm {

enum Number : int {
    AgentCommunication = 0,
    BatteryFault = 1,
    OnBattery = 2,
    BatteryLow = 3,        // also reported as event 2010
    BatteryEod = 4,
    OverTemperature = 5,
    InputBad = 6,          // also reported as event 2009
    OutputBad = 7,
    OutputOverload = 8,
    OnBypass = 9,
    BypassBad = 10,
    OutputOffAsRequested = 11,
    SystemOffAsRequested = 12,
    ChargerFailed = 13,
    OutputOff = 14,
    SystemOff = 15,
    FanFailure = 16,
    FuseFailure = 17,
    GeneralFault = 18,
    DiagnosticFailed = 19,
    CommunicationsLost = 20,
    ShutdownPending = 21,
    ShutdownImminent = 22,
    TestInProgress = 23,
    BatteryDischarge = 26,
    BatteryEqualization = 27,
    BatterySwitchOpen = 28,
    InputSwitchOpen = 29,
    OutputSwitchOpen = 30,
    BypassSwitchOpen = 31,
};

} // namespace UpsAlarm

namespace UpsAlarms {

// Alarm slots with a raised and a cleared text; the event list is twice as long.
constexpr int SlotCount = 54;
constexpr int EventTextCount = 2 * SlotCount;

// How many alarm numbers a client evaluates, given the size of its event
// text list: a quarter of it (0..26 with the full list). Higher bits are
// dropped on purpose.
constexpr int evaluatedCount(int eventTextCount)
{
    return eventTextCount / 4;
}
constexpr int EvaluatedCount = evaluatedCount(EventTextCount);

// Event text index of an alarm's raised and cleared text.
constexpr int raisedTextIndex(int number)
{
    return number;
}
constexpr int clearedTextIndex(int number, int eventTextCount = EventTextCount)
{
    return number + eventTextCount / 2;
}

// The event type that repeats the alarm event of a change of this alarm
// (2010 battery low, 2009 input fault); 0 for every other alarm.
int followUpEvent(int number);

// The event texts in list order as the class named context shows them,
// translated in that context (UpsCatalogue). Empty slots read empty.
QStringList eventTexts(const char *context);

} // namespace UpsAlarms

#endif // UPSALARMS_H
