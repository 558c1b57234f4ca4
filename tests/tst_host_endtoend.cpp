// The host driving the real plug-in against the simulated agent: a request
// from the device view reaches the agent as a register write, alarm texts
// reach the event log, the data log gets its header and rows, and console
// commands take the same road as the view's requests.
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

#include "childform.h"
#include "consolemonitor.h"
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
constexpr quint16 kAllBits = 0xFFFF;

QPushButton *testOkButton(SetInfoForm *form)
{
    QList<QPushButton *> buttons = form->findChildren<QPushButton *>(QStringLiteral("btnWhite"));
    if (buttons.size() != 2)
        return nullptr;
    std::sort(buttons.begin(), buttons.end(), [](QPushButton *a, QPushButton *b) {
        return a->mapTo(a->window(), QPoint()).y() < b->mapTo(b->window(), QPoint()).y();
    });
    return buttons.first(); // the device test group comes first
}

QList<QPair<int, int>> writesOf(const UpsSimulator &sim)
{
    QList<QPair<int, int>> writes;
    for (const UpsSimulator::WriteRecord &w : sim.writes())
        writes << qMakePair(w.reg, int(w.value));
    return writes;
}

bool containsAll(const QStringList &have, const QStringList &wanted)
{
    for (const QString &w : wanted) {
        if (!have.contains(w))
            return false;
    }
    return true;
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
    void consoleCommandsTakeTheViewsRoad();

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
    QCOMPARE(m_host->loadPlugins(QCoreApplication::applicationDirPath()), 1);
    m_host->setUserInfo(QStringLiteral("operator"), 1);
    DeviceEntry entry;
    entry.name = QLatin1String(kDevice);
    QCOMPARE(m_host->startDevices({entry}), 1);
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
    QPushButton *ok = testOkButton(page);
    QVERIFY(ok);

    ModalClicker clicker(QStringLiteral("btnBlue")); // accept the confirmation
    QTest::mouseClick(ok, Qt::LeftButton);           // self-test is the default choice
    QVERIFY(clicker.clicked());
    QTRY_COMPARE_WITH_TIMEOUT(writesOf(m_sim), (QList<QPair<int, int>>{{1, kAllBits}}), 5000);
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
    QTRY_VERIFY_WITH_TIMEOUT(session()->status().alarmActive, kRotationMs);
    QCOMPARE(session()->activeAlarms(), (QStringList{"Battery low", "Input fault", "Alarm 24"}));

    for (int a : alarms)
        m_sim.setAlarm(a, false);
    const QStringList cleared = {"2006 Battery voltage normal", "2006 Input normal", "2006 Alarm 24 cleared"};
    QTRY_VERIFY_WITH_TIMEOUT(containsAll(loggedEvents(), cleared), kRotationMs);
    QTRY_VERIFY_WITH_TIMEOUT(!session()->status().alarmActive, kRotationMs);

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
    QCOMPARE(lines.mid(1).filter(QStringLiteral("Input voltage")).size(), 0); // one header only
    for (const QString &line : lines.mid(1)) {
        const QStringList row = HostTest::csvFields(line);
        QCOMPARE(row.size(), header.size());
        QVERIFY(QDateTime::fromString(row.at(0), QStringLiteral("yyyy-MM-dd hh:mm:ss")).isValid());
    }
    const QStringList last = HostTest::csvFields(lines.last());
    QCOMPARE(last.at(1), QString::number(m_sim.measurement(9))); // input voltage, V
    QCOMPARE(last.at(10), QStringLiteral("Utility supply"));
}

void TestHostEndToEnd::consoleCommandsTakeTheViewsRoad()
{
    QBuffer out;
    out.open(QIODevice::WriteOnly);
    ConsoleMonitor monitor(m_host.get(), &out);
    QSignalSpy viewRequests(session()->view(), &CollectView::postDEvent);
    const QStringList lines = {"selftest",        "discharge",      "cancel", "host-e2e shutdown 12",
                               "standby 600",     "cancelshutdown", "buzzer", "time",
                               "host-e2e discharge 30"};
    for (const QString &line : lines)
        monitor.executeLine(line);
    QCOMPARE(viewRequests.count(), lines.size()); // each one left through the view

    const QList<QPair<int, int>> expected = {{1, kAllBits}, {2, kAllBits}, {4, kAllBits}, {7, 12}, {8, 600},
                                             {5, kAllBits}, {3, kAllBits}, {0, 0},        {6, 30}};
    QTRY_COMPARE_WITH_TIMEOUT(writesOf(m_sim), expected, 8000);
    QTRY_COMPARE_WITH_TIMEOUT(QString::fromUtf8(out.data()).count(QStringLiteral(" excute ")), lines.size(), 5000);
    QVERIFY(out.data().contains("host-e2e excute Shutdown UPS successful"));
    QVERIFY(out.data().contains("host-e2e excute Time set successful"));

    const QString block = monitor.statusBlock();
    QVERIFY2(block.contains(QStringLiteral("1 device(s), 1 communicating")), qPrintable(block));
    QVERIFY2(block.contains(QStringLiteral("host-e2e  communicating  ")), qPrintable(block));
}

QTEST_MAIN(TestHostEndToEnd)
#include "tst_host_endtoend.moc"
