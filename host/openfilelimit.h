#ifndef OPENFILELIMIT_H
#define OPENFILELIMIT_H

#include <QCoreApplication>
#include <QString>

// Every device holds files open for as long as it runs, so the process limit
// on open files (RLIMIT_NOFILE) caps how many devices one host can serve.
// Past it, connections fail one by one with "Out of resources"; the host
// rather says so once, at start.
class OpenFileLimit
{
    Q_DECLARE_TR_FUNCTIONS(OpenFileLimit)
public:
    // Per device: its socket, the wake-up descriptor of its thread's event
    // loop, and the day's data log.
    static constexpr quint64 FilesPerDevice = 3;
    // The host's own: standard streams, the event log, the display
    // connection, fonts, plug-in loading, and some room to spare.
    static constexpr quint64 ReservedFiles = 64;
    // The soft limit set when the hard limit is unlimited.
    static constexpr quint64 UnlimitedCap = 1 << 20;

    // Raises the soft limit to the hard limit (or UnlimitedCap); returns the
    // soft limit in force afterwards, 0 when it cannot be read.
    static quint64 raise();
    // How many devices fit in limit open files.
    static int capacity(quint64 limit);
    // What to tell the user when devices exceed the capacity; empty when they fit.
    static QString shortfallText(quint64 limit, int devices);
};

#endif // OPENFILELIMIT_H
