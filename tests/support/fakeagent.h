#ifndef FAKEAGENT_H
#define FAKEAGENT_H

#include <QHash>
#include <QMutex>
#include <QThread>
#include <QVector>
#include <functional>

class QTcpServer;
class QTcpSocket;

// A scriptable Modbus/TCP peer running in its own thread, so that a client
// blocking in waitForReadyRead in the test's thread still gets its answers.
// It records every 12-byte request and carries out a plan for each: send
// bytes, wait, or reset the connection. Plans run one after the other per
// connection, so a wait also holds back the answers to later requests, as a
// stalled agent would.
class FakeAgent : public QObject
{
    Q_OBJECT
public:
    struct Step
    {
        enum Kind { Send, Wait, Reset };
        Kind kind = Send;
        QByteArray bytes; // Send
        int ms = 0;       // Wait

        static Step send(const QByteArray &bytes) { return {Send, bytes, 0}; }
        static Step wait(int ms) { return {Wait, QByteArray(), ms}; }
        static Step reset() { return {Reset, QByteArray(), 0}; } // connection reset (RST)
    };
    using Plan = QVector<Step>;
    // The plan for one request; ordinal counts the requests since the script was set.
    using Script = std::function<Plan(const QByteArray &request, int ordinal)>;

    FakeAgent();
    ~FakeAgent() override;

    // Starts listening on 127.0.0.1 (port 0 = any free port); returns the port.
    quint16 start(quint16 port = 0);
    // Stops listening and aborts every connection; start() may follow again.
    void stop();
    // Aborts the open connections but keeps listening.
    void dropConnections();
    // The next count connections are closed as soon as they are accepted.
    void closeNextConnections(int count);

    // One answer per request; an empty answer means none is sent.
    void setResponder(const std::function<QByteArray(const QByteArray &request)> &responder);
    void setScript(Script script);
    QList<QByteArray> requests() const;

    // Answers with transaction id 0, unit 1; a reply to each of the four read
    // requests from a plain register image, and the echo of a write.
    static QByteArray answer(quint8 function, const QByteArray &data);
    static QByteArray alarmAnswer(const QByteArray &nineBytes) { return answer(0x02, nineBytes); }
    static QByteArray alarmBits(const QList<int> &activeNumbers);
    static QByteArray defaultReply(const QByteArray &request);

private:
    struct Link // per connection: request bytes not yet complete, steps still to run
    {
        QByteArray pending;
        QList<Step> outbox;
        bool waiting = false;
    };

    // Runs fn in the agent's thread and returns when it is done.
    void inAgentThread(const std::function<void()> &fn);
    void onNewConnection();
    void onReadyRead();
    void runOutbox(QTcpSocket *socket);

    QThread m_thread;
    QTcpServer *m_server = nullptr;
    quint16 m_port = 0;
    int m_closeOnAccept = 0;           // agent thread only
    QHash<QTcpSocket *, Link> m_links; // agent thread only
    mutable QMutex m_lock;             // guards the script, its ordinal and the requests
    Script m_script;
    int m_ordinal = 0;
    QList<QByteArray> m_requests;
};

#endif // FAKEAGENT_H
