#include "hostlogging.h"

// Warnings by default; QT_LOGGING_RULES="orvek.host.debug=true" shows more.
Q_LOGGING_CATEGORY(lcHost, "orvek.host", QtWarningMsg)
