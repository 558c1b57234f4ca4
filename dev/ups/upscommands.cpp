#include "upscommands.h"

#include "upscontract.h"

namespace UpsCommands {

namespace {

namespace R = UpsCommandRegister;

const Command kCommands[] = {
    {UpsControl::SelfTest, QT_TRANSLATE_NOOP("OrvekClient", "Selftest"), R::SelfTest, false, 0xFFFF},
    {UpsControl::Discharge, QT_TRANSLATE_NOOP("OrvekClient", "Discharge"), R::DischargeMinutes, true, 0},
    {UpsControl::DischargeToLow, QT_TRANSLATE_NOOP("OrvekClient", "Discharge to low"), R::DischargeToLow, false, 0xFFFF},
    {UpsControl::CancelTest, QT_TRANSLATE_NOOP("OrvekClient", "Cancel task"), R::CancelTest, false, 0xFFFF},
    {UpsControl::Shutdown, QT_TRANSLATE_NOOP("OrvekClient", "Shutdown UPS"), R::Shutdown, true, 0},
    {UpsControl::Standby, QT_TRANSLATE_NOOP("OrvekClient", "Standby UPS"), R::Standby, true, 0},
    // The clock text is not sent: the device is told register 0 = 0.
    {UpsControl::TimeSet, QT_TRANSLATE_NOOP("OrvekClient", "Time set"), R::TimeSet, false, 0},
    {UpsControl::CancelShutdown, QT_TRANSLATE_NOOP("OrvekClient", "Cancel shutdown"), R::CancelShutdown, false, 0xFFFF},
    // The same value toggles the buzzer whatever the requested state.
    {UpsControl::Buzzer, QT_TRANSLATE_NOOP("OrvekClient", "Buzzer switch"), R::Buzzer, false, 0xFFFF},
};

const Command kUnknown = {0, nullptr, 0, false, 0};

} // namespace

const Command &find(int id)
{
    for (const Command &command : kCommands) {
        if (command.id == id)
            return command;
    }
    return kUnknown;
}

quint16 valueFor(const Command &command, const QString &argument)
{
    if (!command.parsesValue)
        return command.fixedValue;
    bool ok = false;
    const qlonglong parsed = argument.toLongLong(&ok, 10);
    return ok ? quint16(parsed & 0xFFFF) : 0;
}

} // namespace UpsCommands
