#ifndef SIMLOGGING_H
#define SIMLOGGING_H

#include <QLoggingCategory>

// Debug output of the simulated agent ("orvek.sim").
Q_DECLARE_LOGGING_CATEGORY(lcSim)

#endif // SIMLOGGING_H
