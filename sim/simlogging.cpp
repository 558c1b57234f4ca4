#include "simlogging.h"

Q_LOGGING_CATEGORY(lcSim, "orvek.sim", QtWarningMsg)
