// The whole chain once: the host loads the real plug-in, which polls two simulated agents
// over loopback, with the window open; each flow is checked where it ends: upsInfo, the
// logs, the window and the agent's registers.
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeWidget>
#include <QtTest>

#include "childform.h"
#include "hosttestsupport.h"
#include "mainwindow.h"
#include "modalclicker.h"
#include "setinfoform.h"
#include "upssimulator.h"

namespace {
const QString kSingle = QStringLiteral("e2e-1"); // retries 1: lost at the first failed attempt
const QString kThree = QStringLiteral("e2e-3");
constexpr int kConnectMs = 15000; // a 1 s tick, the client's 5 s pause before connecting, and slack
constexpr int kRotationMs = 10000; // a change shows within two 4-tick rotations
using State = DeviceStatus::State;
const QRegularExpression kLinkEvent(QStringLiteral("^104[01] ")); // communication lost or restored

QColor colourOf(State state, bool alarm = false)
{
    return MainWindow::stateColour({QString(), state, QString(), -1, QString(), alarm});
}
} // namespace

class TestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_single.start(QStringLiteral("127.0.0.1"), 0) && m_three.start(QStringLiteral("127.0.0.1"), 0));
        const QList<DeviceEntry> devices{HostTest::writeDevice(kSingle, m_single.port(), 1),
                                         HostTest::writeDevice(kThree, m_three.port(), 5)};
        m_host.reset(new DeviceHost(m_logs.path()));
        QCOMPARE(m_host->loadPlugins(builtBinaryDir()), 1);
        m_host->setUserInfo(QStringLiteral("operator"), 1);
        QCOMPARE(m_host->startDevices(devices), 2);
        m_window.reset(new MainWindow(m_host.get()));
        QCOMPARE(m_window->deviceColour(kThree), colourOf(State::Unknown)); // grey until decided
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }

    void devicesTurnGreenAndFillEveryId()
    {
        for (const QString &name : {kSingle, kThree})
            QTRY_COMPARE_WITH_TIMEOUT(m_window->deviceColour(name), colourOf(State::Communicating), kConnectMs);
        QVERIFY(paneTexts(kThree).contains(QStringLiteral("Communication restored")));
        QStringList status;
        for (QLabel *label : m_window->statusBar()->findChildren<QLabel *>())
            status << label->text();
        QVERIFY2(status.contains("Devices: 2") && status.contains("Communicating: 2"), qPrintable(status.join('|')));

        QTRY_VERIFY_WITH_TIMEOUT(upsInfo(kThree).contains("2026"), kRotationMs);
        const QMap<QString, QVariant> info = upsInfo(kThree);
        const QMap<int, QVariant> image = m_three.dataPointImage();
        QCOMPARE(image.size(), 73 + 27 + 7); // ids 0..72, 2000..2026, 4000..4006
        for (auto it = image.constBegin(); it != image.constEnd(); ++it)
            QCOMPARE(info.value(QString::number(it.key())), it.value());
        QCOMPARE(info.value("4014").toString(), QStringLiteral("127.0.0.1"));
        QCOMPARE(info.value("upsLoad").toInt(), int(m_three.measurement(39)));

        // The device list row shows the identity and address from upsInfo.
        m_window->refreshDevices();
        QTreeWidgetItem *row = child<QTreeWidget>("deviceTree")->topLevelItem(1);
        QCOMPARE(row->text(2), DeviceSession::identityText(m_three.identityText(4000)));
        QCOMPARE(row->text(4), QStringLiteral("tcp:127.0.0.1:%1").arg(m_three.port()));
    }

    void dataLogHasHeaderAndRows()
    {
        const QString path = m_host->logs().dataFilePath(kSingle, QDate::currentDate());
        QTRY_VERIFY_WITH_TIMEOUT(HostTest::fileLines(path).size() >= 3, kRotationMs);
        const QStringList lines = HostTest::fileLines(path);
        const QStringList header = HostTest::csvFields(lines.first());
        QCOMPARE(header, QStringList{"time"} + session(kSingle)->client()->getDataLogDesc());
        for (const QString &line : lines.mid(1)) // one header only
            QCOMPARE(HostTest::csvFields(line).size(), header.size());
        const QStringList last = HostTest::csvFields(lines.last());
        QVERIFY(QDateTime::fromString(last.at(0), QStringLiteral("yyyy-MM-dd hh:mm:ss")).isValid());
        QCOMPARE(last.at(1), QString::number(m_single.measurement(9))); // input voltage, V
        QCOMPARE(last.at(10), QStringLiteral("Utility supply"));
    }

    void scenarioAlarmReachesLogAndWindow()
    {
        QVERIFY(m_three.setScenario(QStringLiteral("mains-return")));
        m_three.setTimeScale(3.0); // the mains fail 5 s of device time in
        QTRY_COMPARE_WITH_TIMEOUT(m_window->deviceColour(kThree), colourOf(State::Communicating, true), kRotationMs);
        QCOMPARE(m_window->deviceColour(kSingle), colourOf(State::Communicating));
        QTRY_VERIFY_WITH_TIMEOUT(loggedEvents(kThree).contains(QStringLiteral("2006 Input fault")), kRotationMs);
        QVERIFY(loggedEvents(kThree).contains(QStringLiteral("2006 Battery powered")));
        QVERIFY(paneTexts(kThree).contains(QStringLiteral("Battery powered")));

        m_three.advance(120); // past the mains' return
        QTRY_COMPARE_WITH_TIMEOUT(m_window->deviceColour(kThree), colourOf(State::Communicating), kRotationMs);
        QTRY_VERIFY_WITH_TIMEOUT(paneTexts(kThree).contains(QStringLiteral("Utility supply normal")), kRotationMs);
        // The input-fault record repeats its 2006: one line for each change.
        const QStringList events = loggedEvents(kThree);
        QCOMPARE(events.filter(QRegularExpression("Input (fault|normal)")),
                 (QStringList{"2006 Input fault", "2006 Input normal"}));
        m_three.setTimeScale(1.0);
        QVERIFY(m_three.setScenario(QStringLiteral("normal")));
    }

    // and a settings-page request reaches the agent
    void viewsFollowSelectionAndUserLevel()
    {
        for (const QString &name : {kThree, kSingle}) {
            m_window->selectDevice(name);
            QCOMPARE(child<QStackedWidget>("viewStack")->currentWidget(), session(name)->view());
        }
        auto *combo = child<QComboBox>("userLevelCombo");
        QCOMPARE(combo->currentIndex(), 1); // started as operator
        for (int level : {0, 1}) {
            combo->setCurrentIndex(level);
            QCOMPARE(m_host->userLevel(), level);
            for (DeviceSession *s : m_host->sessions())
                QCOMPARE(qobject_cast<ChildForm *>(s->view())->controlPage->isEnabled(), level == 1);
        }

        // A self-test asked for on the shown view's settings page.
        auto *view = qobject_cast<ChildForm *>(session(kSingle)->view());
        QVERIFY(view->isVisible());
        view->tabs()->setCurrentIndex(ChildForm::ControlTab);
        const auto buttons = view->controlPage->findChildren<QPushButton *>(QStringLiteral("btnWhite"));
        QVERIFY(!buttons.isEmpty()); // the device test group's button is the upper one
        QPushButton *ok = *std::min_element(buttons.begin(), buttons.end(), [view](QPushButton *a, QPushButton *b) {
            return a->mapTo(view, QPoint()).y() < b->mapTo(view, QPoint()).y();
        });
        ModalClicker clicker(QStringLiteral("btnBlue")); // accept the confirmation
        QTest::mouseClick(ok, Qt::LeftButton);           // self-test is the default choice
        QVERIFY(clicker.clicked());
        QTRY_COMPARE_WITH_TIMEOUT(m_single.writes().size(), 1, kRotationMs);
        QCOMPARE(QList<int>({m_single.writes().first().reg, m_single.writes().first().value}), QList<int>({1, 0xFFFF}));
        const QString done = QStringLiteral("1042 e2e-1 excute Selftest successful");
        QTRY_VERIFY_WITH_TIMEOUT(loggedEvents(kSingle).contains(done), kRotationMs);
        // The device test lasts about 10 s: long enough for the next alarm answer.
        QTRY_VERIFY_WITH_TIMEOUT(loggedEvents(kSingle).contains(QStringLiteral("2006 A test is in progress")),
                                 kRotationMs);
    }

    void agentGoesAwayAndComesBack()
    {
        const quint16 port = m_single.port();
        m_single.stop();
        QTRY_COMPARE_WITH_TIMEOUT(m_window->deviceColour(kSingle), colourOf(State::Lost), kConnectMs);
        QVERIFY(!session(kSingle)->status().model.isEmpty()); // the last data stay while lost
        QVERIFY(m_single.start(QStringLiteral("127.0.0.1"), port));
        QTRY_COMPARE_WITH_TIMEOUT(session(kSingle)->status().state, State::Communicating, kConnectMs);
        // With retries = 1 the first connection attempt already counted as one
        // without an answer, so the start reads lost, then restored.
        const QStringList cycle = {"1041 Communication lost", "1040 Communication restored"};
        QTRY_COMPARE_WITH_TIMEOUT(loggedEvents(kSingle).filter(kLinkEvent), cycle + cycle, 5000);
        QCOMPARE(loggedEvents(kThree).filter(kLinkEvent), cycle.mid(1)); // the other device went on undisturbed
    }

    void closingStopsDevices()
    {
        QPointer<QWidget> view = session(kSingle)->view();
        QElapsedTimer timer;
        timer.start();
        QVERIFY(m_window->close());
        QVERIFY(m_host->sessions().isEmpty());
        QVERIFY(!view); // gone with its client
        // Connected clients leave after their current tick: at most the answer wait.
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(child<QTreeWidget>("deviceTree")->topLevelItemCount(), 0);
        QCOMPARE(child<QStackedWidget>("viewStack")->count(), 1); // the empty page
    }

private:
    DeviceSession *session(const QString &name) const { return m_host->session(name); }
    QMap<QString, QVariant> upsInfo(const QString &name) const
    {
        QMutexLocker locker(&session(name)->client()->mutex);
        return session(name)->client()->upsInfo;
    }
    QStringList loggedEvents(const QString &device) const; // "type text" per line
    QStringList paneTexts(const QString &device) const     // newest first
    {
        QStringList texts;
        for (QTreeWidgetItem *item : child<QTreeWidget>("eventTable")->findItems(device, Qt::MatchExactly, 1))
            texts << item->text(2);
        return texts;
    }
    template<class T> T *child(const char *name) const { return m_window->findChild<T *>(QLatin1String(name)); }

    UpsSimulator m_single{UpsSimulator::Profile::Single};
    UpsSimulator m_three{UpsSimulator::Profile::Three};
    QTemporaryDir m_logs;
    std::unique_ptr<DeviceHost> m_host;
    std::unique_ptr<MainWindow> m_window;
};

QStringList TestEndToEnd::loggedEvents(const QString &device) const
{
    QStringList events;
    for (const QString &line : HostTest::fileLines(m_host->logs().eventFilePath(QDate::currentDate()))) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.value(1) == device)
            events << fields.value(2) + QLatin1Char(' ') + fields.value(3);
    }
    return events;
}

QTEST_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
