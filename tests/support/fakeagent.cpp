#include "fakeagent.h"

#include <QMetaObject>
#include <QMutexLocker>
#include <QTcpServer>
#include <QTcpSocket>

namespace {
constexpr int kRequestSize = 12;
}

FakeAgent::FakeAgent()
{
    m_responder = &FakeAgent::defaultReply;
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

quint16 FakeAgent::start(quint16 port)
{
    QMetaObject::invokeMethod(
        this,
        [this, port] {
            if (!m_server) {
                m_server = new QTcpServer(this);
                connect(m_server, &QTcpServer::newConnection, this, &FakeAgent::onNewConnection);
            }
            if (m_server->listen(QHostAddress::LocalHost, port))
                m_port = m_server->serverPort();
        },
        Qt::BlockingQueuedConnection);
    return m_port;
}

void FakeAgent::stop()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!m_server)
                return;
            m_server->close();
            for (QTcpSocket *s : findChildren<QTcpSocket *>())
                s->abort();
        },
        Qt::BlockingQueuedConnection);
}

void FakeAgent::setResponder(Responder responder)
{
    QMutexLocker locker(&m_lock);
    m_responder = std::move(responder);
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
        connect(s, &QTcpSocket::readyRead, this, &FakeAgent::onReadyRead);
        connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
    }
}

void FakeAgent::onReadyRead()
{
    auto *s = qobject_cast<QTcpSocket *>(sender());
    if (!s)
        return;
    m_pending += s->readAll();
    while (m_pending.size() >= kRequestSize) {
        const QByteArray request = m_pending.left(kRequestSize);
        m_pending.remove(0, kRequestSize);
        Responder responder;
        {
            QMutexLocker locker(&m_lock);
            m_requests << request;
            responder = m_responder;
        }
        const QByteArray reply = responder ? responder(request) : QByteArray();
        if (!reply.isEmpty())
            s->write(reply);
    }
}

QByteArray FakeAgent::answer(quint8 function, const QByteArray &data)
{
    QByteArray a(9, '\0');
    const int length = data.size() + 3; // unit + function + byte count + data
    a[4] = char(length >> 8);
    a[5] = char(length & 0xFF);
    a[6] = 0x01;
    a[7] = char(function);
    a[8] = char(data.size() & 0xFF);
    return a + data;
}

QByteArray FakeAgent::registersAnswer(const QVector<quint16> &registers)
{
    QByteArray data;
    for (quint16 r : registers)
        data.append(char(r >> 8)).append(char(r & 0xFF));
    return answer(0x04, data);
}

QByteArray FakeAgent::alarmAnswer(const QByteArray &nineBytes)
{
    return answer(0x02, nineBytes);
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
        QVector<quint16> regs(quantity);
        for (int i = 0; i < quantity; ++i)
            regs[i] = quint16(i + 1);
        return registersAnswer(regs);
    }
    if (function == 0x06)
        return request; // a write is echoed
    return QByteArray();
}
