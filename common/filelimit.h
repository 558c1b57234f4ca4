#ifndef FILELIMIT_H
#define FILELIMIT_H

#include <QtGlobal>

// Raises this process's soft open-file limit (RLIMIT_NOFILE) to its hard
// limit, or to capWhenUnlimited when the hard limit is unlimited, as a
// process holding thousands of sockets needs. Returns the soft limit in
// force afterwards (0 when it cannot be read, the largest quint64 when it is
// unlimited).
quint64 raiseOpenFileLimit(quint64 capWhenUnlimited = quint64(1) << 20);

#endif // FILELIMIT_H
