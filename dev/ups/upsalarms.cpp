#include "upsalarms.h"

#include <QCoreApplication>

#include "upscontract.h"

namespace UpsAlarms {

namespace {

struct Slot
{
    const char *raised;  // null: the slot has no text
    const char *cleared;
    bool clearedTranslated;
};

// Slot n: the raised text is event n, the cleared one event n + 54. Slot 20
// is answered by a text about input power, module 2 words its temperature
// without "is", and the "normal" texts answer both the too-high and the
// too-low alarm: the device's own wording, kept as it is.
const Slot kSlots[SlotCount] = {
    {QT_TRANSLATE_NOOP("OrvekFont", "Communication between agent and UPS fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Communications between agent and UPS normal"), true}, // 0
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Battery normal"), true}, // 1
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery powered"),
     QT_TRANSLATE_NOOP("OrvekFont", "Utility supply normal"), true}, // 2
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Battery voltage normal"), true}, // 3
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery EOD"),
     QT_TRANSLATE_NOOP("OrvekFont", "Battery resume"), true}, // 4
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature overrun MAX-value"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature normal"), true}, // 5
    {QT_TRANSLATE_NOOP("OrvekFont", "Input fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Input normal"), true}, // 6
    {QT_TRANSLATE_NOOP("OrvekFont", "Output fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Output normal"), true}, // 7
    {QT_TRANSLATE_NOOP("OrvekFont", "Load overrun MAX-value"),
     QT_TRANSLATE_NOOP("OrvekFont", "The output load normal"), true}, // 8
    {QT_TRANSLATE_NOOP("OrvekFont", "Bypass powered"),
     QT_TRANSLATE_NOOP("OrvekFont", "Inverter operation"), true}, // 9
    {QT_TRANSLATE_NOOP("OrvekFont", "Bypass fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Bypass normal"), true}, // 10
    {QT_TRANSLATE_NOOP("OrvekFont", "The UPS output has shutdown as requested"),
     QT_TRANSLATE_NOOP("OrvekFont", "The UPS output not shutdown as requested"), true}, // 11
    {QT_TRANSLATE_NOOP("OrvekFont", "The entire UPS has shutdown as commanded"),
     QT_TRANSLATE_NOOP("OrvekFont", "The entire UPS not shutdown as commanded"), true}, // 12
    {QT_TRANSLATE_NOOP("OrvekFont", "Charger subsystem fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Charger subsystem normal"), true}, // 13
    {QT_TRANSLATE_NOOP("OrvekFont", "The output of the UPS is in the off state"),
     QT_TRANSLATE_NOOP("OrvekFont", "UPS output on"), true}, // 14
    {QT_TRANSLATE_NOOP("OrvekFont", "The UPS system is in the off state"),
     QT_TRANSLATE_NOOP("OrvekFont", "UPS on"), true}, // 15
    {QT_TRANSLATE_NOOP("OrvekFont", "Fan fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Fan normal"), true}, // 16
    {QT_TRANSLATE_NOOP("OrvekFont", "Fuse fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "Fuse normal"), true}, // 17
    {QT_TRANSLATE_NOOP("OrvekFont", "UPS fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "UPS normal"), true}, // 18
    {QT_TRANSLATE_NOOP("OrvekFont", "Last diagnostic test failed"),
     QT_TRANSLATE_NOOP("OrvekFont", "Last diagnostic test success"), true}, // 19
    {QT_TRANSLATE_NOOP("OrvekFont", "Communications between the agent and the UPS fault"),
     QT_TRANSLATE_NOOP("OrvekFont", "UPS is not awaiting the return of input power"), true}, // 20
    {QT_TRANSLATE_NOOP("OrvekFont", "UPS shutdown after delay countdown is underway"),
     QT_TRANSLATE_NOOP("OrvekFont", "UPS shutdown after delay ended"), true}, // 21
    {QT_TRANSLATE_NOOP("OrvekFont", "The UPS will turn off power to the load"),
     QT_TRANSLATE_NOOP("OrvekFont", "The UPS will not turn off power to the load"), true}, // 22
    {QT_TRANSLATE_NOOP("OrvekFont", "A test is in progress"),
     QT_TRANSLATE_NOOP("OrvekFont", "No a test is in progress"), true}, // 23
    {nullptr,
     nullptr, true}, // 24
    {nullptr,
     nullptr, true}, // 25
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery Discharge"),
     "Battery Discharge end", false}, // 26
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery equalization"),
     "Battery equalization end", false}, // 27
    {QT_TRANSLATE_NOOP("OrvekFont", "Battery switch open"),
     QT_TRANSLATE_NOOP("OrvekFont", "Battery switch close"), true}, // 28
    {QT_TRANSLATE_NOOP("OrvekFont", "Input switch open"),
     QT_TRANSLATE_NOOP("OrvekFont", "Input switch close"), true}, // 29
    {QT_TRANSLATE_NOOP("OrvekFont", "Output switch open"),
     QT_TRANSLATE_NOOP("OrvekFont", "Output switch close"), true}, // 30
    {QT_TRANSLATE_NOOP("OrvekFont", "Bypass switch open"),
     QT_TRANSLATE_NOOP("OrvekFont", "Bypass switch close"), true}, // 31
    {nullptr,
     nullptr, true}, // 32
    {nullptr,
     nullptr, true}, // 33
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 communication lost"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 communication normal"), true}, // 34
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is normal"), true}, // 35
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is normal"), true}, // 36
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is normal"), true}, // 37
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is normal"), true}, // 38
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 communication lost"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 communication normal"), true}, // 39
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature normal"), true}, // 40
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature normal"), true}, // 41
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is normal"), true}, // 42
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is normal"), true}, // 43
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 communication lost"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 communication normal"), true}, // 44
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is normal"), true}, // 45
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is normal"), true}, // 46
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is normal"), true}, // 47
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is normal"), true}, // 48
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 communication lost"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 communication normal"), true}, // 49
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is normal"), true}, // 50
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is normal"), true}, // 51
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is too high"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is normal"), true}, // 52
    {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is too low"),
     QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is normal"), true}, // 53
};

QString text(const char *context, const char *source, bool translated)
{
    if (!source)
        return QString();
    return translated ? QCoreApplication::translate(context, source) : QString::fromLatin1(source);
}

} // namespace

int followUpEvent(int number)
{
    switch (number) {
    case UpsAlarm::BatteryLow:
        return UpsEvent::BatteryLow;
    case UpsAlarm::InputBad:
        return UpsEvent::InputFault;
    default:
        return 0;
    }
}

QStringList eventTexts(const char *context)
{
    QStringList texts;
    texts.reserve(EventTextCount);
    for (const Slot &slot : kSlots)
        texts << text(context, slot.raised, true);
    for (const Slot &slot : kSlots)
        texts << text(context, slot.cleared, slot.clearedTranslated);
    return texts;
}

} // namespace UpsAlarms
