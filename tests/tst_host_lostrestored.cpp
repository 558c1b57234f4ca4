// A device whose agent goes away turns "lost" and comes back when the agent
// returns, in the host's status and in its event log. The client pauses 5 s
// before every connection attempt, so each change takes several seconds.
#include <QtTest>

#include "devicehost.h"
#include "devicesession.h"
#include "hosttestsupport.h"
#include "upssimulator.h"

namespace {
const char kDevice[] = "host-lost";
// A tick (1 s), the 5 s pause before connecting, the next tick's first answer.
constexpr int kChangeMs = 15000;
// Queued events reach the log right after the state changes.
constexpr int kLogMs = 5000;
} // namespace

class TestHostLostRestored : public QObject
{
    Q_OBJECT

private slots:
    void agentGoesAwayAndComesBack();
};

void TestHostLostRestored::agentGoesAwayAndComesBack()
{
    UpsSimulator sim(UpsSimulator::Profile::Three);
    QVERIFY(sim.start(QStringLiteral("127.0.0.1"), 0));
    const quint16 port = sim.port();
    HostTest::writeDevice(QLatin1String(kDevice), port, 1, 1); // lost at the first failed attempt

    QTemporaryDir logs;
    DeviceHost host(logs.path());
    QCOMPARE(host.loadPlugins(QCoreApplication::applicationDirPath()), 1);
    DeviceEntry entry;
    entry.name = QLatin1String(kDevice);
    QCOMPARE(host.startDevices({entry}), 1);
    DeviceSession *session = host.session(QLatin1String(kDevice));
    QCOMPARE(session->status().state, DeviceStatus::State::Unknown);

    QTRY_COMPARE_WITH_TIMEOUT(session->status().state, DeviceStatus::State::Communicating, kChangeMs);
    sim.stop();
    QTRY_COMPARE_WITH_TIMEOUT(session->status().state, DeviceStatus::State::Lost, kChangeMs);
    QVERIFY(sim.start(QStringLiteral("127.0.0.1"), port));
    QTRY_COMPARE_WITH_TIMEOUT(session->status().state, DeviceStatus::State::Communicating, kChangeMs);

    // The status reads the client's shared state directly, while the event
    // that announces the change comes through the queue: wait for the log.
    const QString path = host.logs().eventFilePath(QDate::currentDate());
    const auto communication = [&path] {
        QStringList texts;
        for (const QStringList &fields : HostTest::eventLines(path, QLatin1String(kDevice))) {
            if (fields.value(2) == QLatin1String("1040") || fields.value(2) == QLatin1String("1041"))
                texts << fields.value(3);
        }
        return texts;
    };
    // With retries = 1 the first connection attempt already counts as one
    // without an answer, so the start reads lost, then restored.
    QTRY_COMPARE_WITH_TIMEOUT(communication(), (QStringList{"Communication lost", "Communication restored",
                                                            "Communication lost", "Communication restored"}),
                              kLogMs);
    // The last data stay while lost; the identity came with them.
    QVERIFY(!session->status().model.isEmpty());
}

QTEST_MAIN(TestHostLostRestored)
#include "tst_host_lostrestored.moc"
