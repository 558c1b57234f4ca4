#include "openfilelimit.h"

#include <limits>

#include "filelimit.h"

quint64 OpenFileLimit::raise()
{
    return raiseOpenFileLimit(UnlimitedCap);
}

int OpenFileLimit::capacity(quint64 limit)
{
    if (limit <= ReservedFiles)
        return 0;
    const quint64 devices = (limit - ReservedFiles) / FilesPerDevice;
    return int(qMin<quint64>(devices, quint64(std::numeric_limits<int>::max())));
}

QString OpenFileLimit::shortfallText(quint64 limit, int devices)
{
    const int served = capacity(limit);
    if (devices <= served)
        return QString();
    return tr("%1 devices are configured, but with at most %2 open files the host can serve only %3 of them; "
              "the others fail to connect. Raise the open-file limit (ulimit -n, LimitNOFILE) to %4 or more, "
              "or share the devices among several hosts")
        .arg(devices)
        .arg(limit)
        .arg(served)
        .arg(ReservedFiles + FilesPerDevice * quint64(devices));
}
