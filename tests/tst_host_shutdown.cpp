// Stopping the host while clients are stuck in their blocking connection
// steps: one sleeps in the pause before reconnecting, one waits for a
// listener that never completes the handshake. The stop must end within the
// host's bound (5 s pause + 30 s connection wait) without deleting a running
// thread.
#include <QtTest>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "devicehost.h"
#include "devicesession.h"
#include "hosttestsupport.h"

namespace {

const char kPausing[] = "host-stop-pause";
const char kBlocked[] = "host-stop-connect";
// One tick (1 s) plus the 5 s pause: the blocked client is then in its wait.
constexpr int kSettleMs = 7000;
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
        m_fd = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        socklen_t length = sizeof address;
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
        const bool connected = probe.waitForConnected(500);
        probe.abort();
        return m_port != 0 && !connected;
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
    HostTest::writeDevice(QLatin1String(kPausing), closedLocalPort(), 5, 1);
    HostTest::writeDevice(QLatin1String(kBlocked), listener.port(), 5, 1);

    QTemporaryDir logs;
    DeviceHost host(logs.path());
    QCOMPARE(host.loadPlugins(builtBinaryDir()), 1);
    QCOMPARE(host.startDevices(HostTest::entries({kPausing, kBlocked})), 2);
    QTest::qWait(kSettleMs);
    QVERIFY(host.session(QLatin1String(kPausing))->isRunning());
    QVERIFY(host.session(QLatin1String(kBlocked))->isRunning());

    QElapsedTimer timer;
    timer.start();
    QMap<QString, qint64> stoppedAt;
    host.shutdown([&](const QStringList &stillRunning) {
        for (const char *device : {kPausing, kBlocked}) {
            const QString name = QLatin1String(device);
            if (!stillRunning.contains(name) && !stoppedAt.contains(name))
                stoppedAt.insert(name, timer.elapsed());
        }
    });
    const qint64 total = timer.elapsed();

    QVERIFY(host.sessions().isEmpty()); // stopped, then deleted
    QVERIFY2(total <= DeviceHost::StopBoundSeconds * 1000 + kMarginMs, qPrintable(QString::number(total)));
    // The clients stop independently: the pausing one is not held up.
    QVERIFY(stoppedAt.contains(QLatin1String(kPausing)));
    QVERIFY2(stoppedAt.value(kPausing) <= kPauseMs + kMarginMs, qPrintable(QString::number(stoppedAt.value(kPausing))));
    // Proof that the second client really was in its connection wait.
    QVERIFY2(total > 2 * kPauseMs, qPrintable(QString::number(total)));
}

QTEST_MAIN(TestHostShutdown)
#include "tst_host_shutdown.moc"
