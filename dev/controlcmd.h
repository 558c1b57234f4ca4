#ifndef CONTROLCMD_H
#define CONTROLCMD_H

#include <QString>

// One queued control request: the control id and its argument as text.
struct ControlCmd
{
    int id = 0;
    QString value;
};

#endif // CONTROLCMD_H
