#ifndef MULTIAGENT_H
#define MULTIAGENT_H

#include <QElapsedTimer>
#include <QObject>
#include <QVector>

#include "registerimage.h"

class QTcpServer;
class QTcpSocket;

// One process, one thread, N Modbus/TCP ports on consecutive numbers, all
// serving the same register image. It counts the answers per port so that a
// benchmark can tell which devices were served on time, and the moment each
// port first answered a measurement read.
class MultiAgent : public QObject
{
    Q_OBJECT
public:
    explicit MultiAgent(QObject *parent = nullptr);

    // Listens on address:basePort .. basePort+count-1; false when a port is taken.
    bool listen(const QString &address, quint16 basePort, int count);

    // Clears all counters and starts the clock of firstDataMs().
    void reset();
    // Starts a measuring window: answeredSinceMark() counts from here.
    void mark();
    quint64 answeredSinceMark() const;
    // Ports that answered at least `expected` requests since mark().
    int portsAtLeast(quint32 expected) const;
    // Ports that answered a measurement read since reset(), and the time of
    // the last of those first answers (-1 until every port answered one).
    int portsWithData() const;
    qint64 firstDataMs() const;

private:
    void accept(int port);
    void serve(int port, QTcpSocket *socket);

    RegisterImage m_image;
    QVector<QTcpServer *> m_servers;
    QVector<quint32> m_answered;
    QVector<quint32> m_marked;
    QVector<qint64> m_firstData;
    int m_portsWithData = 0;
    qint64 m_lastFirstData = -1;
    QElapsedTimer m_clock;
};

#endif // MULTIAGENT_H
