#include "testconfig.h"

#include <QTcpServer>

quint16 closedLocalPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}
