#include "inifilecheck.h"

#include <QFile>

namespace {

// A value reaches QSettings' object decoding only through '@', and an escape
// ("\x40", "\100") can spell the '@' or any letter after it.
bool mayDecodeObjects(const QByteArray &value)
{
    return value.contains('@') || value.contains('\\');
}

// Whatever follows the first '=' of a line; a line without one (other than a
// [group]) is checked whole, in case the reader joins it to a value. Comment
// lines are checked too: a value-like text there costs a warning, not a crash.
QByteArray valueOf(const QByteArray &line)
{
    const int equals = line.indexOf('=');
    if (equals >= 0)
        return line.mid(equals + 1);
    return line.trimmed().startsWith('[') ? QByteArray() : line;
}

} // namespace

int IniFileCheck::unsafeLine(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    // QSettings ends a line at '\n' or '\r', whichever comes.
    QByteArray text = file.readAll();
    text.replace("\r\n", "\n");
    text.replace('\r', '\n');
    const QList<QByteArray> lines = text.split('\n');
    for (int i = 0; i < lines.size(); ++i) {
        if (mayDecodeObjects(valueOf(lines.at(i))))
            return i + 1;
    }
    return 0;
}
