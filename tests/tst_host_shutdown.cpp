// Stopping the host while clients are stuck in their blocking connection steps:
// one sleeps in the pause before reconnecting, one waits for a handshake that
// never completes. The stop ends within the host's bound without deleting a
// running thread.
#include <QtTest>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "devicesession.h"
#include "hosttestsupport.h"

namespace {

const QString kPausing = QStringLiteral("host-stop-pause");
const QString kBlocked = QStringLiteral("host-stop-connect");
constexpr int kSettleMs = 7000; // one 1 s tick and the 5 s pause: the blocked client is then in its wait
constexpr int kMarginMs = 1500;
constexpr int kPauseMs = 5000;

// A listening socket on 127.0.0.1 with a backlog of 0 that never accepts.
// Once one connection sits in its queue, further handshakes are not answered
// and a connect() waits until its own time limit.
class StuckListener
{
public:
    StuckListener()
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (m_fd < 0 || ::bind(m_fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0
            || ::listen(m_fd, 0) != 0
            || ::getsockname(m_fd, reinterpret_cast<sockaddr *>(&address), &length) != 0)
            return;
        m_port = ntohs(address.sin_port);
        m_filler.connectToHost(QHostAddress::LocalHost, m_port);
        m_filler.waitForConnected(1000);
    }
    ~StuckListener()
    {
        m_filler.abort();
        if (m_fd >= 0)
            ::close(m_fd);
    }
    quint16 port() const { return m_port; }
    // True when a new connection attempt really hangs.
    bool isStuck()
    {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, m_port);
        return m_port != 0 && !probe.waitForConnected(500);
    }

private:
    int m_fd = -1;
    quint16 m_port = 0;
    QTcpSocket m_filler;
};

} // namespace

class TestHostShutdown : public QObject
{
    Q_OBJECT

private slots:
    void stopWhileClientsAreBlocked();
};

void TestHostShutdown::stopWhileClientsAreBlocked()
{
    StuckListener listener;
    if (!listener.isStuck())
        QSKIP("the local listener completes handshakes; cannot make a connection attempt hang");
    HostTest::writeDevice(kPausing, closedLocalPort(), 5);
    HostTest::writeDevice(kBlocked, listener.port(), 5);

    QTemporaryDir logs;
    DeviceHost host(logs.path());
    QCOMPARE(host.loadPlugins(builtBinaryDir()), 1);
    QCOMPARE(host.startDevices(HostTest::entries({kPausing, kBlocked})), 2);
    QTest::qWait(kSettleMs);
    QVERIFY(host.session(kPausing)->isRunning() && host.session(kBlocked)->isRunning());

    QElapsedTimer timer;
    timer.start();
    qint64 pausingStoppedAt = -1;
    host.shutdown([&](const QStringList &stillRunning) {
        if (!stillRunning.contains(kPausing) && pausingStoppedAt < 0)
            pausingStoppedAt = timer.elapsed();
    });
    const qint64 total = timer.elapsed();

    QVERIFY(host.sessions().isEmpty()); // stopped, then deleted
    QVERIFY2(total <= DeviceHost::StopBoundSeconds * 1000 + kMarginMs, qPrintable(QString::number(total)));
    // The clients stop independently: the pausing one is not held up.
    QVERIFY2(pausingStoppedAt >= 0 && pausingStoppedAt <= kPauseMs + kMarginMs,
             qPrintable(QString::number(pausingStoppedAt)));
    // Proof that the second client really was in its connection wait.
    QVERIFY2(total > 2 * kPauseMs, qPrintable(QString::number(total)));
}

QTEST_MAIN(TestHostShutdown)
#include "tst_host_shutdown.moc"
