#ifndef NUTCOMMANDS_H
#define NUTCOMMANDS_H

#include <QByteArray>
#include <QMap>
#include <QStringList>
#include <QVariant>

// The NUT instant commands a UPS offers and the control request each becomes:
// the same id and value a button of the device view or a console command
// would send.
namespace NutCommands {

struct Command
{
    const char *name;
    int controlId;
    const char *value;   // the request's value when the command takes none
    bool takesSeconds;   // the INSTCMD value, a number of seconds, is the request's value
    const char *description;
};

// Names offered for a UPS with these data points, in name order.
// beeper.enable and beeper.disable only while the buzzer's state is known
// and the other one: the device only knows a toggle.
QStringList available(const QMap<int, QVariant> &data);
// The command of that name whatever the data; null for names never offered.
const Command *find(const QByteArray &name);
QByteArray description(const QByteArray &name);

// The request's value for an INSTCMD with the argument given or not; false
// when the argument does not fit the command.
bool requestValue(const Command &command, const QByteArray *argument, QString *value);

} // namespace NutCommands

#endif // NUTCOMMANDS_H
