#include "openfilelimit.h"

#include <limits>
#include <sys/resource.h>

#include "hostlogging.h"

quint64 OpenFileLimit::raise()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 0;
    const rlim_t wanted = limit.rlim_max == RLIM_INFINITY ? rlim_t(UnlimitedCap) : limit.rlim_max;
    if (limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < wanted) {
        const rlim_t before = limit.rlim_cur;
        limit.rlim_cur = wanted;
        if (setrlimit(RLIMIT_NOFILE, &limit) != 0) {
            qCDebug(lcHost) << "cannot raise the open-file limit from" << before << "to" << wanted;
            limit.rlim_cur = before;
        }
    }
    return limit.rlim_cur == RLIM_INFINITY ? std::numeric_limits<quint64>::max() : quint64(limit.rlim_cur);
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
