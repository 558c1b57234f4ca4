#ifndef FAKEAGENT_H
#define FAKEAGENT_H

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QThread>
#include <QVector>
#include <functional>

class QTcpServer;

// A scriptable Modbus/TCP peer running in its own thread, so that a client
// blocking in waitForReadyRead in the test's thread still gets its answers.
// It records every 12-byte request and answers each with replyFor(request).
class FakeAgent : public QObject
{
    Q_OBJECT
public:
    using Responder = std::function<QByteArray(const QByteArray &request)>;

    FakeAgent();
    ~FakeAgent() override;

    // Starts listening on 127.0.0.1 (port 0 = any free port); returns the port.
    quint16 start(quint16 port = 0);
    void stop();

    void setResponder(Responder responder);
    QList<QByteArray> requests() const;

    // Answer builders (transaction id 0, unit 1).
    static QByteArray answer(quint8 function, const QByteArray &data);
    static QByteArray registersAnswer(const QVector<quint16> &registers);
    static QByteArray alarmAnswer(const QByteArray &nineBytes);
    static QByteArray alarmBits(const QList<int> &activeNumbers);
    // A reply for each of the four read requests, from a plain register image.
    static QByteArray defaultReply(const QByteArray &request);

private:
    void onNewConnection();
    void onReadyRead();

    QThread m_thread;
    QTcpServer *m_server = nullptr;
    quint16 m_port = 0;
    mutable QMutex m_lock;
    Responder m_responder;
    QList<QByteArray> m_requests;
    QByteArray m_pending;
};

#endif // FAKEAGENT_H
