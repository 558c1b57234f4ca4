#include "fakeagent.h"

#include <QMutexLocker>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#endif

static constexpr int kRequestSize = 12;

FakeAgent::FakeAgent()
{
    setResponder(&FakeAgent::defaultReply);
    m_thread.setObjectName(QStringLiteral("FakeAgent"));
    m_thread.start();
    moveToThread(&m_thread);
}

FakeAgent::~FakeAgent()
{
    stop();
    m_thread.quit();
    m_thread.wait();
}

void FakeAgent::inAgentThread(const std::function<void()> &fn)
{
    QMetaObject::invokeMethod(this, fn, Qt::BlockingQueuedConnection);
}

quint16 FakeAgent::start(quint16 port)
{
    inAgentThread([this, port] {
        if (!m_server) {
            m_server = new QTcpServer(this);
            connect(m_server, &QTcpServer::newConnection, this, &FakeAgent::onNewConnection);
        }
        if (m_server->listen(QHostAddress::LocalHost, port))
            m_port = m_server->serverPort();
    });
    return m_port;
}

void FakeAgent::stop()
{
    inAgentThread([this] {
        if (m_server)
            m_server->close();
    });
    dropConnections();
}

void FakeAgent::dropConnections()
{
    inAgentThread([this] {
        for (QTcpSocket *s : findChildren<QTcpSocket *>())
            s->abort();
    });
}

void FakeAgent::closeNextConnections(int count)
{
    inAgentThread([this, count] { m_closeOnAccept = count; });
}

void FakeAgent::setResponder(const std::function<QByteArray(const QByteArray &request)> &responder)
{
    setScript([responder](const QByteArray &request, int) {
        const QByteArray answer = responder(request);
        return answer.isEmpty() ? Plan() : Plan{Step::send(answer)};
    });
}

void FakeAgent::setScript(Script script)
{
    QMutexLocker locker(&m_lock);
    m_script = std::move(script);
    m_ordinal = 0;
}

QList<QByteArray> FakeAgent::requests() const
{
    QMutexLocker locker(&m_lock);
    return m_requests;
}

void FakeAgent::onNewConnection()
{
    while (QTcpSocket *s = m_server->nextPendingConnection()) {
        s->setParent(this);
        connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
        if (m_closeOnAccept > 0) {
            --m_closeOnAccept;
            s->disconnectFromHost();
            continue;
        }
        m_links.insert(s, Link());
        connect(s, &QObject::destroyed, this, [this, s] { m_links.remove(s); });
        connect(s, &QTcpSocket::readyRead, this, &FakeAgent::onReadyRead);
    }
}

void FakeAgent::onReadyRead()
{
    auto *s = qobject_cast<QTcpSocket *>(sender());
    auto link = m_links.find(s);
    if (link == m_links.end())
        return;
    link->pending += s->readAll();
    while (link->pending.size() >= kRequestSize) {
        const QByteArray request = link->pending.left(kRequestSize);
        link->pending.remove(0, kRequestSize);
        Script script;
        int ordinal = 0;
        {
            QMutexLocker locker(&m_lock);
            m_requests << request;
            script = m_script;
            ordinal = m_ordinal++;
        }
        if (script)
            link->outbox += script(request, ordinal).toList();
    }
    runOutbox(s);
}

void FakeAgent::runOutbox(QTcpSocket *socket)
{
    auto link = m_links.find(socket);
    if (link == m_links.end() || socket->state() != QAbstractSocket::ConnectedState)
        return;
    while (!link->waiting && !link->outbox.isEmpty()) {
        const Step step = link->outbox.takeFirst();
        switch (step.kind) {
        case Step::Send:
            socket->write(step.bytes);
            socket->flush(); // on the wire now, not when the loop comes round
            break;
        case Step::Wait:
            link->waiting = true;
            // The socket as context: the continuation dies with the connection.
            QTimer::singleShot(step.ms, socket, [this, socket] {
                auto again = m_links.find(socket);
                if (again != m_links.end()) {
                    again->waiting = false;
                    runOutbox(socket);
                }
            });
            return;
        case Step::Reset:
            link->outbox.clear();
#ifdef Q_OS_UNIX
            // A zero linger time makes the close send RST instead of FIN.
            const linger noLinger{1, 0};
            ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger);
#endif
            socket->abort();
            return;
        }
    }
}

QByteArray FakeAgent::answer(quint8 function, const QByteArray &data)
{
    const int length = data.size() + 3; // unit + function + byte count + data
    return QByteArray(4, '\0') + char(length >> 8) + char(length & 0xFF) + char(1) + char(function)
        + char(data.size() & 0xFF) + data;
}

QByteArray FakeAgent::alarmBits(const QList<int> &activeNumbers)
{
    QByteArray bits(9, '\0');
    for (int n : activeNumbers) {
        if (n >= 0 && n < 72)
            bits[n / 8] = char(quint8(bits[n / 8]) | (1 << (n % 8)));
    }
    return bits;
}

QByteArray FakeAgent::defaultReply(const QByteArray &request)
{
    const quint8 function = quint8(request.at(7));
    const int quantity = (quint8(request.at(10)) << 8) | quint8(request.at(11));
    if (function == 0x02)
        return alarmAnswer(alarmBits({}));
    if (function == 0x04) {
        QByteArray data;
        for (int i = 1; i <= quantity; ++i)
            data.append(char(i >> 8)).append(char(i & 0xFF));
        return answer(0x04, data);
    }
    if (function == 0x06)
        return request; // a write is echoed
    return QByteArray();
}
