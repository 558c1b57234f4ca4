#ifndef INIFILECHECK_H
#define INIFILECHECK_H

#include <QString>

// QSettings turns "@Variant(...)" and "@DateTime(...)" values of an INI file
// into objects through QDataStream, which trusts the sizes written inside: a
// crafted value exhausts memory or crashes the reader, whoever opens the file.
// No value of the device file (an address, a number, a class name) needs an
// '@' or a backslash escape, so a file holding one is not handed to QSettings.
namespace IniFileCheck {

// 0 when QSettings may read the file (also when it is missing or unreadable);
// otherwise the number (from 1) of the first line whose value holds '@' or '\'.
int unsafeLine(const QString &path);

} // namespace IniFileCheck

#endif // INIFILECHECK_H
