#ifndef METRICSSERVER_H
#define METRICSSERVER_H

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <mutex>
#include <thread>

#include "metricscounters.h"

class DeviceHost;

namespace httplib {
class Server;
}

// Serves /metrics to Prometheus. The HTTP server answers in threads of its
// own while the sessions live in the GUI thread, so the text is built here
// on a timer and handed over under a mutex: a scrape never touches a session
// and sees data at most one refresh old.
class MetricsServer : public QObject
{
    Q_OBJECT
public:
    static constexpr int RefreshMs = 1000;

    explicit MetricsServer(DeviceHost *host, QObject *parent = nullptr);
    ~MetricsServer() override;

    // Binds address:port (port 0: any free one) and starts serving. False
    // with errorString() when the address cannot be bound.
    bool listen(const QString &address, quint16 port);
    quint16 serverPort() const { return m_port; }
    QString errorString() const { return m_error; }
    // Stops answering and waits for the server's thread; also done on destruction.
    void stop();

    // Rebuilds the text from the sessions now (the timer does it every RefreshMs).
    void refresh();
    QByteArray exposition() const;

private:
    DeviceHost *m_host;
    MetricsCounters m_counters;
    QTimer m_timer;
    mutable std::mutex m_mutex;
    QByteArray m_text; // guarded by m_mutex
    std::unique_ptr<httplib::Server> m_http;
    std::thread m_thread;
    quint16 m_port = 0;
    QString m_error;
};

#endif // METRICSSERVER_H
