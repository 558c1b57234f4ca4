#ifndef FILELIMIT_H
#define FILELIMIT_H

// Raises the soft open-file limit of this process to its hard limit, as a
// process serving or polling thousands of sockets needs; returns the new soft
// limit (or the old one when raising fails).
long raiseOpenFileLimit();

#endif // FILELIMIT_H
