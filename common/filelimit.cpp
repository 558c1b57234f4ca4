#include "filelimit.h"

#include <limits>
#include <sys/resource.h>

quint64 raiseOpenFileLimit(quint64 capWhenUnlimited)
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 0;
    const rlim_t wanted = limit.rlim_max == RLIM_INFINITY ? rlim_t(capWhenUnlimited) : limit.rlim_max;
    if (limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur < wanted) {
        rlimit raised = limit;
        raised.rlim_cur = wanted;
        if (setrlimit(RLIMIT_NOFILE, &raised) == 0) // else the old limit stays
            limit = raised;
    }
    return limit.rlim_cur == RLIM_INFINITY ? std::numeric_limits<quint64>::max() : quint64(limit.rlim_cur);
}
