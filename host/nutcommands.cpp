#include "nutcommands.h"

#include <QRegularExpression>

#include "upscontract.h"
#include "upspoints.h"

namespace NutCommands {

namespace {

// The values the device view's settings page sends: shutdown with "12", and
// "Restart the UPS" as a standby of 60 s. The buzzer request toggles whatever
// its value; "1" and "0" are what the view's on and off buttons send.
constexpr char kShutdownValue[] = "12";
constexpr char kRestartSeconds[] = "60";
constexpr char kBuzzerOn[] = "1";
constexpr char kBuzzerOff[] = "0";

constexpr char kBeeperEnable[] = "beeper.enable";
constexpr char kBeeperDisable[] = "beeper.disable";

const Command kCommands[] = {
    {"beeper.disable", UpsControl::Buzzer, kBuzzerOff, false, "Disable the UPS beeper"},
    {"beeper.enable", UpsControl::Buzzer, kBuzzerOn, false, "Enable the UPS beeper"},
    {"beeper.toggle", UpsControl::Buzzer, kBuzzerOn, false, "Toggle the UPS beeper"},
    {"load.off.delay", UpsControl::Standby, "", true, "Turn off the load for the given seconds (standby)"},
    {"shutdown.return", UpsControl::Standby, kRestartSeconds, false,
     "Turn off the load and return after a short standby"},
    {"shutdown.stayoff", UpsControl::Shutdown, kShutdownValue, false, "Turn off the load and remain off"},
    {"shutdown.stop", UpsControl::CancelShutdown, "", false, "Stop a shutdown in progress"},
    {"test.battery.start.deep", UpsControl::DischargeToLow, "", false, "Start a deep battery test"},
    {"test.battery.start.quick", UpsControl::SelfTest, "", false, "Start a quick battery test"},
    {"test.battery.stop", UpsControl::CancelTest, "", false, "Stop the battery test"},
};

bool offered(const Command &command, int buzzer)
{
    if (qstrcmp(command.name, kBeeperEnable) == 0)
        return buzzer == UpsCode::BuzzerDisabled;
    if (qstrcmp(command.name, kBeeperDisable) == 0)
        return buzzer == UpsCode::BuzzerEnabled;
    return true;
}

} // namespace

QStringList available(const QMap<int, QVariant> &data)
{
    const int buzzer = data.value(UpsPoint::BuzzerState).toInt();
    QStringList names;
    for (const Command &command : kCommands) {
        if (offered(command, buzzer))
            names << QLatin1String(command.name);
    }
    return names;
}

const Command *find(const QByteArray &name)
{
    for (const Command &command : kCommands) {
        if (name == command.name)
            return &command;
    }
    return nullptr;
}

QByteArray description(const QByteArray &name)
{
    const Command *command = find(name);
    return command ? QByteArray(command->description) : QByteArrayLiteral("Description unavailable");
}

bool requestValue(const Command &command, const QByteArray *argument, QString *value)
{
    if (!command.takesSeconds) {
        *value = QLatin1String(command.value);
        return !argument;
    }
    static const QRegularExpression seconds(QStringLiteral("^[0-9]{1,9}$"));
    if (!argument || !seconds.match(QString::fromLatin1(*argument)).hasMatch())
        return false;
    *value = QString::fromLatin1(*argument);
    return true;
}

} // namespace NutCommands
