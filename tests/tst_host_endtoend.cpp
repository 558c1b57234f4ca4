// The host driving the real plug-in against the simulated agent: a request
// from the device view reaches the agent as a register write, alarm texts
// reach the event log, the data log gets its header and rows, and the device
// turns "lost" while its agent is away and comes back with it.
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

#include "childform.h"
#include "devicehost.h"
#include "devicesession.h"
#include "hosttestsupport.h"
#include "modalclicker.h"
#include "setinfoform.h"
#include "upssimulator.h"

namespace {

const char kDevice[] = "host-e2e";
constexpr int kConnectMs = 15000;   // 1 s tick + the client's 5 s pause before connecting, and slack
constexpr int kRotationMs = 8000;   // a change shows after at most two 4-tick rotations

bool containsAll(const QStringList &have, const QStringList &wanted)
{
    return std::all_of(wanted.begin(), wanted.end(), [&have](const QString &w) { return have.contains(w); });
}

} // namespace

class TestHostEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();

    void settingsPageRequestReachesAgent();
    void alarmTextsReachEventLog();
    void dataLogHasHeaderAndRows();
    void agentGoesAwayAndComesBack(); // last: it stops the agent

private:
    QStringList loggedEvents() const;
    DeviceSession *session() const { return m_host->session(QLatin1String(kDevice)); }

    UpsSimulator m_sim{UpsSimulator::Profile::Single};
    QTemporaryDir m_logs;
    std::unique_ptr<DeviceHost> m_host;
};

void TestHostEndToEnd::initTestCase()
{
    QVERIFY(m_sim.start(QStringLiteral("127.0.0.1"), 0));
    HostTest::writeDevice(QLatin1String(kDevice), m_sim.port());
    m_host.reset(new DeviceHost(m_logs.path()));
    QCOMPARE(m_host->loadPlugins(builtBinaryDir()), 1);
    m_host->setUserInfo(QStringLiteral("operator"), 1);
    QCOMPARE(m_host->startDevices(HostTest::entries({kDevice})), 1);
    QTRY_COMPARE_WITH_TIMEOUT(session()->status().state, DeviceStatus::State::Communicating, kConnectMs);
}

void TestHostEndToEnd::cleanupTestCase()
{
    QElapsedTimer timer;
    timer.start();
    m_host->shutdown();
    // A connected client leaves after its current tick: at most the answer wait.
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
}

void TestHostEndToEnd::cleanup()
{
    m_sim.setScenario(QStringLiteral("normal"));
    m_sim.clearWrites();
}

QStringList TestHostEndToEnd::loggedEvents() const
{
    QStringList events;
    const QString path = m_host->logs().eventFilePath(QDate::currentDate());
    for (const QStringList &fields : HostTest::eventLines(path, QLatin1String(kDevice)))
        events << fields.value(2) + QLatin1Char(' ') + fields.value(3);
    return events;
}

void TestHostEndToEnd::settingsPageRequestReachesAgent()
{
    auto *view = qobject_cast<ChildForm *>(session()->view());
    QVERIFY(view);
    SetInfoForm *page = view->controlPage;
    QVERIFY(page->isEnabled()); // the host logged in an operator
    view->resize(800, 600);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view));
    view->tabs()->setCurrentIndex(ChildForm::ControlTab);
    QPushButton *ok = nullptr; // the device test group's button is the upper one
    for (QPushButton *b : page->findChildren<QPushButton *>(QStringLiteral("btnWhite"))) {
        if (!ok || b->mapTo(view, QPoint()).y() < ok->mapTo(view, QPoint()).y())
            ok = b;
    }
    QVERIFY(ok);

    ModalClicker clicker(QStringLiteral("btnBlue")); // accept the confirmation
    QTest::mouseClick(ok, Qt::LeftButton);           // self-test is the default choice
    QVERIFY(clicker.clicked());
    QTRY_COMPARE_WITH_TIMEOUT(m_sim.writes().size(), 1, 5000);
    QCOMPARE(m_sim.writes().first().reg, 1);
    QCOMPARE(m_sim.writes().first().value, quint16(0xFFFF));
    QTRY_VERIFY_WITH_TIMEOUT(loggedEvents().contains(QStringLiteral("1042 host-e2e excute Selftest successful")),
                             5000);
    view->hide();
}

void TestHostEndToEnd::alarmTextsReachEventLog()
{
    const QList<int> alarms = {3, 6, 24}; // battery low, input fault, one without text
    for (int a : alarms)
        m_sim.setAlarm(a, true);
    const QStringList raised = {"2006 Battery low", "2006 Input fault", "2006 Alarm 24 raised"};
    QTRY_VERIFY_WITH_TIMEOUT(containsAll(loggedEvents(), raised), kRotationMs);
    QTRY_COMPARE_WITH_TIMEOUT(session()->activeAlarms(), (QStringList{"Battery low", "Input fault", "Alarm 24"}),
                              kRotationMs);

    for (int a : alarms)
        m_sim.setAlarm(a, false);
    const QStringList cleared = {"2006 Battery voltage normal", "2006 Input normal", "2006 Alarm 24 cleared"};
    QTRY_VERIFY_WITH_TIMEOUT(containsAll(loggedEvents(), cleared), kRotationMs);

    // The battery-low and input-fault records repeat their 2006: one line each.
    const QStringList events = loggedEvents();
    QCOMPARE(events.filter(QStringLiteral("Battery low")).size(), 1);
    QCOMPARE(events.filter(QStringLiteral("Input normal")).size(), 1);
}

void TestHostEndToEnd::dataLogHasHeaderAndRows()
{
    const QString path = m_host->logs().dataFilePath(QLatin1String(kDevice), QDate::currentDate());
    QTRY_VERIFY_WITH_TIMEOUT(HostTest::fileLines(path).size() >= 3, kRotationMs);
    const QStringList lines = HostTest::fileLines(path);
    const QStringList header = HostTest::csvFields(lines.first());
    QCOMPARE(header, QStringList{"time"} + session()->client()->getDataLogDesc());
    for (const QString &line : lines.mid(1)) { // one header only
        const QStringList row = HostTest::csvFields(line);
        QCOMPARE(row.size(), header.size());
        QVERIFY(QDateTime::fromString(row.at(0), QStringLiteral("yyyy-MM-dd hh:mm:ss")).isValid());
    }
    const QStringList last = HostTest::csvFields(lines.last());
    QCOMPARE(last.at(1), QString::number(m_sim.measurement(9))); // input voltage, V
    QCOMPARE(last.at(10), QStringLiteral("Utility supply"));
}

void TestHostEndToEnd::agentGoesAwayAndComesBack()
{
    const quint16 port = m_sim.port();
    m_sim.stop();
    QTRY_COMPARE_WITH_TIMEOUT(session()->status().state, DeviceStatus::State::Lost, kConnectMs);
    QVERIFY(!session()->status().model.isEmpty()); // the last data stay while lost
    QVERIFY(m_sim.start(QStringLiteral("127.0.0.1"), port));
    QTRY_COMPARE_WITH_TIMEOUT(session()->status().state, DeviceStatus::State::Communicating, kConnectMs);

    // The status reads upsInfo directly while the events come queued: wait for
    // the log. With retries = 1 the first connection attempt already counted
    // as one without an answer, so the start reads lost, then restored.
    const QStringList cycle = {"1041 Communication lost", "1040 Communication restored"};
    QTRY_COMPARE_WITH_TIMEOUT(loggedEvents().filter(QRegularExpression(QStringLiteral("^104[01] "))),
                              cycle + cycle, 5000);
}

QTEST_MAIN(TestHostEndToEnd)
#include "tst_host_endtoend.moc"
