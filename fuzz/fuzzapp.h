#ifndef FUZZAPP_H
#define FUZZAPP_H

#include <QCoreApplication>
#include <cstdio>

// Qt's warnings about odd input are expected while fuzzing and only slow the
// run down; critical and fatal messages still reach stderr.
inline void fuzzMessageHandler(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        fprintf(stderr, "%s\n", qPrintable(message));
}

// The application object the client and QSettings expect; it lives as long
// as the process. Only the program name is passed on: libFuzzer owns argv.
inline void startFuzzApplication(char *programName)
{
    static int argc = 1;
    static char *argv[] = {programName, nullptr};
    qInstallMessageHandler(fuzzMessageHandler);
    new QCoreApplication(argc, argv);
}

#endif // FUZZAPP_H
