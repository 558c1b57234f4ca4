#include "multiagent.h"

#include <QLoggingCategory>
#include <QTcpServer>
#include <QTcpSocket>

#include "upsframes.h"

Q_LOGGING_CATEGORY(lcMultiAgent, "orvek.bench.multiagent")

namespace {

constexpr int kLengthOffset = 4;
constexpr int kLengthFieldEnd = 6; // the length counts the bytes after it
// A length beyond one Modbus ADU means the stream is garbage.
constexpr int kMaxLength = 254;

int frameSize(const QByteArray &buffer)
{
    if (buffer.size() < kLengthFieldEnd)
        return 0;
    const int length = quint8(buffer.at(kLengthOffset)) << 8 | quint8(buffer.at(kLengthOffset + 1));
    return length < 2 || length > kMaxLength ? -1 : kLengthFieldEnd + length;
}

bool isMeasurementRead(const QByteArray &frame)
{
    const UpsFrames::ReadRequest &read = UpsFrames::Requests[UpsFrames::Measurements];
    return frame.size() >= UpsFrames::FrameSize && quint8(frame.at(7)) == read.function
           && (quint8(frame.at(8)) << 8 | quint8(frame.at(9))) == read.start;
}

} // namespace

MultiAgent::MultiAgent(QObject *parent)
    : QObject(parent)
{
    m_clock.start();
}

bool MultiAgent::listen(const QString &address, quint16 basePort, int count)
{
    m_answered.fill(0, count);
    m_marked.fill(0, count);
    m_firstData.fill(-1, count);
    for (int port = 0; port < count; ++port) {
        auto *server = new QTcpServer(this);
        if (!server->listen(QHostAddress(address), quint16(basePort + port))) {
            qCWarning(lcMultiAgent) << "cannot listen on" << address << basePort + port << server->errorString();
            return false;
        }
        connect(server, &QTcpServer::newConnection, this, [this, port] { accept(port); });
        m_servers << server;
    }
    return true;
}

void MultiAgent::reset()
{
    m_answered.fill(0);
    m_marked.fill(0);
    m_firstData.fill(-1);
    m_portsWithData = 0;
    m_lastFirstData = -1;
    m_clock.restart();
}

void MultiAgent::mark()
{
    m_marked = m_answered;
}

quint64 MultiAgent::answeredSinceMark() const
{
    quint64 sum = 0;
    for (int port = 0; port < m_answered.size(); ++port)
        sum += m_answered.at(port) - m_marked.at(port);
    return sum;
}

int MultiAgent::portsAtLeast(quint32 expected) const
{
    int ports = 0;
    for (int port = 0; port < m_answered.size(); ++port)
        ports += m_answered.at(port) - m_marked.at(port) >= expected ? 1 : 0;
    return ports;
}

int MultiAgent::portsWithData() const
{
    return m_portsWithData;
}

qint64 MultiAgent::firstDataMs() const
{
    return m_portsWithData == m_firstData.size() ? m_lastFirstData : -1;
}

void MultiAgent::accept(int port)
{
    while (QTcpSocket *socket = m_servers.at(port)->nextPendingConnection()) {
        socket->setParent(this);
        connect(socket, &QTcpSocket::readyRead, this, [this, port, socket] { serve(port, socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void MultiAgent::serve(int port, QTcpSocket *socket)
{
    // Unread bytes stay in the socket until a whole frame is there.
    for (;;) {
        const int size = frameSize(socket->peek(kLengthFieldEnd));
        if (size < 0) {
            socket->abort();
            return;
        }
        if (size == 0 || socket->bytesAvailable() < size)
            return;
        const QByteArray frame = socket->read(size);
        socket->write(m_image.answer(frame));
        ++m_answered[port];
        if (m_firstData.at(port) < 0 && isMeasurementRead(frame)) {
            m_firstData[port] = m_clock.elapsed();
            m_lastFirstData = m_firstData.at(port);
            ++m_portsWithData;
        }
    }
}
