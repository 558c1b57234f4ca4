#ifndef NUTCONNECTION_H
#define NUTCONNECTION_H

#include <QByteArray>
#include <QObject>
#include <QString>

class QTcpSocket;

// One NUT client: cuts what it sends into request lines and bounds what
// either side may leave buffered, and keeps what the client has told the
// server about itself (user name, password, the UPS it logged in to).
class NutConnection : public QObject
{
    Q_OBJECT
public:
    // Longest request line; longer ones are answered with an error and dropped.
    static constexpr int MaxLineBytes = 512;
    // Answers a client may leave unread before it is dropped.
    static constexpr qint64 MaxUnsentBytes = 256 * 1024;

    // Takes over the socket.
    explicit NutConnection(QTcpSocket *socket, QObject *parent = nullptr);

    // Sends one answer line (the line end is added). A client with too much
    // unread output is disconnected instead.
    void send(const QByteArray &line);
    // Sends the line, then closes once it is written; later requests are ignored.
    void sendAndClose(const QByteArray &line);
    QString peerAddress() const;

    QByteArray userName;
    QByteArray password;
    bool hasUserName = false;
    bool hasPassword = false;
    QString loginUps; // empty: not logged in

signals:
    // One request line without its line end.
    void requestReceived(QByteArray line);
    // A request line the server cannot take: too long or binary.
    void requestRejected();
    void closed();

private:
    void onReadyRead();
    void takeLines();
    bool isOpen() const;

    QTcpSocket *m_socket;
    QByteArray m_buffer;
    bool m_skippingLongLine = false;
    bool m_closing = false;
};

#endif // NUTCONNECTION_H
