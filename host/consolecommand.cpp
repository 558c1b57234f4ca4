#include "consolecommand.h"

#include <QRegularExpression>

#include "upscontract.h"

namespace {

enum class Argument { None, Number, OptionalNumber, OnOff };

// Console words and the request each becomes. "discharge" is the view's
// discharge test (to low voltage); "discharge N" asks for the timed one.
struct CommandWord
{
    const char *word;
    int controlId;
    Argument argument;
    const char *fixedValue;
};
constexpr CommandWord kCommands[] = {
    {"selftest", UpsControl::SelfTest, Argument::None, ""},
    {"discharge", UpsControl::DischargeToLow, Argument::OptionalNumber, ""},
    {"cancel", UpsControl::CancelTest, Argument::None, ""},
    {"shutdown", UpsControl::Shutdown, Argument::Number, ""},
    {"standby", UpsControl::Standby, Argument::Number, ""},
    {"cancelshutdown", UpsControl::CancelShutdown, Argument::None, ""},
    {"buzzer", UpsControl::Buzzer, Argument::OnOff, "1"},
    {"time", UpsControl::TimeSet, Argument::None, ""},
};

const CommandWord *findCommand(const QString &word)
{
    for (const CommandWord &command : kCommands) {
        if (word.compare(QLatin1String(command.word), Qt::CaseInsensitive) == 0)
            return &command;
    }
    return nullptr;
}

bool isNumber(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,9}$"));
    return digits.match(text).hasMatch();
}

ConsoleCommand invalid(const QString &error)
{
    ConsoleCommand c;
    c.kind = ConsoleCommand::Kind::Invalid;
    c.error = error;
    return c;
}

} // namespace

ConsoleCommand ConsoleCommand::parse(const QString &line, const QStringList &devices, const QDateTime &now)
{
    QStringList words = line.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    ConsoleCommand result;
    if (words.isEmpty())
        return result;

    QString device;
    if (words.size() > 1 && devices.contains(words.first()))
        device = words.takeFirst();

    const QString word = words.first().toLower();
    if (device.isEmpty() && words.size() == 1) {
        if (word == QLatin1String("status")) {
            result.kind = Kind::Status;
            return result;
        }
        if (word == QLatin1String("help") || word == QLatin1String("?")) {
            result.kind = Kind::Help;
            return result;
        }
        if (word == QLatin1String("quit") || word == QLatin1String("exit")) {
            result.kind = Kind::Quit;
            return result;
        }
    }

    const CommandWord *command = findCommand(word);
    if (!command)
        return invalid(tr("unknown command \"%1\" (try help)").arg(words.first()));
    const QStringList args = words.mid(1);
    if (args.size() > 1)
        return invalid(tr("too many arguments for %1").arg(word));
    const QString arg = args.value(0);

    result.kind = Kind::Control;
    result.controlId = command->controlId;
    result.value = QLatin1String(command->fixedValue);
    switch (command->argument) {
    case Argument::None:
        if (!arg.isEmpty())
            return invalid(tr("%1 takes no argument").arg(word));
        break;
    case Argument::Number:
        if (!isNumber(arg))
            return invalid(tr("%1 needs a number, e.g. %1 60").arg(word));
        result.value = arg;
        break;
    case Argument::OptionalNumber:
        if (!arg.isEmpty()) {
            if (!isNumber(arg))
                return invalid(tr("%1 takes a number or nothing").arg(word));
            result.controlId = UpsControl::Discharge;
            result.value = arg;
        }
        break;
    case Argument::OnOff:
        if (arg.compare(QLatin1String("off"), Qt::CaseInsensitive) == 0)
            result.value = QStringLiteral("0");
        else if (!arg.isEmpty() && arg.compare(QLatin1String("on"), Qt::CaseInsensitive) != 0)
            return invalid(tr("%1 takes on, off or nothing").arg(word));
        break;
    }
    if (result.controlId == UpsControl::TimeSet)
        result.value = now.toString(QLatin1String(UpsKey::TimeFormat));

    if (device.isEmpty()) {
        if (devices.isEmpty())
            return invalid(tr("no device is running"));
        if (devices.size() > 1)
            return invalid(tr("several devices: put the device name first, e.g. %1 %2")
                               .arg(devices.first(), line.trimmed()));
        device = devices.first();
    }
    result.device = device;
    return result;
}

QString ConsoleCommand::helpText()
{
    return tr("Commands, optionally preceded by a device name (e.g. \"ups2 selftest\"):\n"
              "  selftest          self-test\n"
              "  discharge [N]     discharge test to low battery; with N: timed discharge N\n"
              "  cancel            cancel the running test\n"
              "  shutdown N        shut down, N as the device takes it\n"
              "  standby N         standby, N as the device takes it (seconds)\n"
              "  cancelshutdown    cancel a shutdown or standby\n"
              "  buzzer [on|off]   buzzer switch\n"
              "  time              set the device clock to now\n"
              "  status            show the status block now\n"
              "  help              this text\n"
              "  quit              stop and exit");
}
