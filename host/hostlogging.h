#ifndef HOSTLOGGING_H
#define HOSTLOGGING_H

#include <QLoggingCategory>

// Debug output of the host application ("orvek.host").
Q_DECLARE_LOGGING_CATEGORY(lcHost)

#endif // HOSTLOGGING_H
