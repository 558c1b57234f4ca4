#include "nutconnection.h"

#include <QHostAddress>
#include <QHostAddress>
#include <QTcpSocket>

namespace {

constexpr qint64 kReadChunk = 4096;
// The socket stops reading from the network at this, so a fast sender is
// slowed down by TCP instead of filling memory.
constexpr qint64 kReadBufferBytes = 16 * 1024;

} // namespace

NutConnection::NutConnection(QTcpSocket *socket, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(kReadBufferBytes);
    connect(m_socket, &QTcpSocket::readyRead, this, &NutConnection::onReadyRead);
    connect(m_socket, &QTcpSocket::disconnected, this, &NutConnection::closed);
}

QString NutConnection::peerAddress() const
{
    return m_socket->peerAddress().toString();
}

bool NutConnection::isOpen() const
{
    return !m_closing && m_socket->state() == QAbstractSocket::ConnectedState;
}

void NutConnection::send(const QByteArray &line)
{
    if (!isOpen())
        return;
    m_socket->write(line + '\n');
    if (m_socket->bytesToWrite() > MaxUnsentBytes) {
        m_closing = true;
        m_socket->abort(); // a client that does not read its answers
    }
}

void NutConnection::sendAndClose(const QByteArray &line)
{
    send(line);
    if (!isOpen())
        return;
    m_closing = true;
    m_socket->disconnectFromHost(); // after the pending output
}

void NutConnection::onReadyRead()
{
    // Bounded: bytesAvailable never exceeds the read buffer size.
    while (isOpen() && m_socket->bytesAvailable() > 0) {
        m_buffer += m_socket->read(kReadChunk);
        takeLines();
    }
}

void NutConnection::takeLines()
{
    int start = 0;
    for (int end = m_buffer.indexOf('\n'); end >= 0 && isOpen(); end = m_buffer.indexOf('\n', start)) {
        QByteArray line = m_buffer.mid(start, end - start);
        start = end + 1;
        if (m_skippingLongLine) { // the rest of a line already answered
            m_skippingLongLine = false;
            continue;
        }
        if (line.endsWith('\r'))
            line.chop(1);
        if (line.size() > MaxLineBytes)
            emit requestRejected();
        else
            emit requestReceived(line);
    }
    m_buffer.remove(0, start);
    if (m_buffer.size() > MaxLineBytes) {
        if (!m_skippingLongLine && isOpen())
            emit requestRejected();
        m_skippingLongLine = true;
        m_buffer.clear();
    }
}
