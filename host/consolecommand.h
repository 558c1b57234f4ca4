#ifndef CONSOLECOMMAND_H
#define CONSOLECOMMAND_H

#include <QCoreApplication>
#include <QDateTime>
#include <QString>
#include <QStringList>

// One line typed at the console monitor, parsed into a control request for a
// device (the same id and value the device view would send) or a console
// action. Grammar: [device] command [argument].
class ConsoleCommand
{
    Q_DECLARE_TR_FUNCTIONS(ConsoleCommand)

public:
    enum class Kind { Empty, Control, Status, Help, Quit, Invalid };

    // devices: the names of the running devices. Without a device prefix the
    // command goes to the only device; with several devices it needs one.
    static ConsoleCommand parse(const QString &line, const QStringList &devices,
                                const QDateTime &now = QDateTime::currentDateTime());
    static QString helpText();

    Kind kind = Kind::Empty;
    QString device;
    int controlId = 0;
    QString value;
    QString error; // Invalid only
};

#endif // CONSOLECOMMAND_H
