#ifndef UPSCOMMANDS_H
#define UPSCOMMANDS_H

#include <QString>
#include <QtGlobal>

// Holding registers the agent takes control commands in (write single register).
namespace UpsCommandRegister {

enum Register : quint8 {
    TimeSet = 0,
    SelfTest = 1,
    DischargeToLow = 2,
    Buzzer = 3,
    CancelTest = 4,
    CancelShutdown = 5,
    DischargeMinutes = 6,
    Shutdown = 7,
    Standby = 8,
};
constexpr int Count = 9;

} // namespace UpsCommandRegister

// What each control id writes, and the command's name in result texts.
namespace UpsCommands {

struct Command
{
    int id;
    const char *text;    // source text in the client's context "OrvekClient"; null: none
    quint8 reg;
    bool parsesValue;    // the request's argument is the value written
    quint16 fixedValue;  // otherwise this
};

// The command of a control id. An unknown id writes register 0 with 0 and
// has no name.
const Command &find(int id);
// The value written for a request: the fixed value, or the low 16 bits of
// the decimal argument (text that is not a number gives 0).
quint16 valueFor(const Command &command, const QString &argument);

} // namespace UpsCommands

#endif // UPSCOMMANDS_H
