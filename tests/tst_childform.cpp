// Device tab container: user level gating, which page a refresh or a tab
// change reaches, hostile data on every page, and screenshots of all tabs.

#include <QDir>
#include <QFileInfo>
#include <QRadioButton>
#include <QScopeGuard>
#include <QSettings>
#include <QTabWidget>
#include <QtTest>

#include "chartscreenshots.h"
#include "childform.h"
#include "energyline.h"
#include "rateinfoform.h"
#include "rteventform.h"
#include "setinfoform.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

namespace {

// The simulated agent's map with a couple of active alarms, so that the
// alarm page has rows to show.
DataMap fullMap(bool threePhase)
{
    DataMap map = ChartScreenshots::agentImage(threePhase);
    map[threePhase ? 2016 : 2019] = 1;
    if (threePhase)
        map[2023] = 1;
    map.insert(4014, QStringLiteral("127.0.1.10"));
    return map;
}

// Writes the protocol of a device group; the group is removed again when the
// returned guard goes out of scope.
auto deviceWithProtocol(const QString &device, int protocol)
{
    const QString path = SetInfoForm::configFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSettings(path, QSettings::IniFormat).setValue(device + QStringLiteral("/protocol"), protocol);
    return qScopeGuard([path, device] { QSettings(path, QSettings::IniFormat).remove(device); });
}

} // namespace

class TestChildForm : public QObject
{
    Q_OBJECT

private slots:
    void userLevelGatesControlPage_data();
    void userLevelGatesControlPage();
    void refreshReachesOnlyVisiblePage_data();
    void refreshReachesOnlyVisiblePage();
    void hostileDataOnEveryTab();
    void screenshots_data();
    void screenshots();
};

void TestChildForm::userLevelGatesControlPage_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("0") << 0 << false;
    QTest::newRow("1") << 1 << true;
}

void TestChildForm::userLevelGatesControlPage()
{
    QFETCH(int, level);
    QFETCH(bool, enabled);
    ChildForm form;
    // Start from the opposite state so that both directions are exercised.
    form.setUserInfo(QStringLiteral("op"), enabled ? 0 : 1);
    form.setUserInfo(QStringLiteral("op"), level);
    QCOMPARE(form.controlPage->isEnabled(), enabled);
    QVERIFY(form.energyPage->isEnabled() && form.ratePage->isEnabled()); // only the Control tab
}

void TestChildForm::refreshReachesOnlyVisiblePage_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("byTabChange"); // shown by switching to it from the Control tab, not by refreshData()
    QTest::newRow("energy") << 0 << false;
    QTest::newRow("alarms") << 1 << false;
    QTest::newRow("detail") << 2 << false;
    QTest::newRow("control") << 3 << false;
    QTest::newRow("tab change to detail") << 2 << true;
}

void TestChildForm::refreshReachesOnlyVisiblePage()
{
    QFETCH(int, tab);
    QFETCH(bool, byTabChange);
    // Protocol 1 has no restart row; the Control tab reads it when it is shown.
    const QString device = QStringLiteral("viewsb-childform-%1").arg(QCoreApplication::applicationPid());
    const auto removeDevice = deviceWithProtocol(device, 1);
    ChildForm form;
    form.setName(device);
    form.tabs()->setCurrentIndex(byTabChange ? 3 : tab);
    const QString energy = form.energyPage->inputVoltage();
    const int alarms = form.alarmPage->recordedAlarmCount();
    const DataMap rated = form.ratePage->lastData();
    const DataMap data = fullMap(byTabChange);
    form.flushData(data);
    QCOMPARE(form.ratePage->lastData(), rated); // flushData alone shows nothing
    if (byTabChange)
        form.tabs()->setCurrentIndex(tab);
    else
        form.refreshData();
    QCOMPARE(form.currentTab, tab);
    QCOMPARE(form.energyPage->inputVoltage() != energy, tab == 0);
    QCOMPARE(form.alarmPage->recordedAlarmCount() != alarms, tab == 1);
    QCOMPARE(form.ratePage->lastData() == data, tab == 2);
    QCOMPARE(form.controlPage->findChild<QRadioButton *>("OffSet_3")->isHidden(), tab == 3 || byTabChange);
}

void TestChildForm::hostileDataOnEveryTab()
{
    ChildForm form;
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    for (int tab = 0; tab < form.tabs()->count(); ++tab) {
        form.tabs()->setCurrentIndex(tab);
        form.flushData(ViewSampleData::hostileData());
        form.refreshData();
        QVERIFY(!form.grab().isNull()); // paints the visible page with the data
        form.flushData(DataMap());
        form.refreshData();
        QCOMPARE(form.currentTab, tab);
    }
}

void TestChildForm::screenshots_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::newRow("single") << false;
    QTest::newRow("three") << true;
}

void TestChildForm::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the pictures");
    QFETCH(bool, threePhase);
    const QLatin1String phase(threePhase ? "three" : "single");
    ChartScreenshots::useDesktopFont();

    // Embedded like the host does it: a child widget keeps the default size
    // even where a page asks for more.
    QWidget host;
    host.resize(741, 483);
    auto *form = new ChildForm;
    form->setParent(&host);
    form->setGeometry(0, 0, 741, 483);
    // The three-phase unit speaks the protocol with standby minutes and restart.
    const QString device = QStringLiteral("viewsb-shot-%1-%2").arg(phase).arg(QCoreApplication::applicationPid());
    const auto removeDevice = deviceWithProtocol(device, threePhase ? 2 : 1);
    form->setName(device);
    form->setUserInfo(QStringLiteral("admin"), 2);
    host.show();
    QVERIFY(QTest::qWaitForWindowExposed(&host));
    form->flushData(fullMap(threePhase));
    const char *names[] = {"energyline", "alarm", "detail", "control"};
    for (int tab = 0; tab < 4; ++tab) {
        form->tabs()->setCurrentIndex(tab);
        form->refreshData();
        QTest::qWait(150); // one animation step of the diagram
        QCOMPARE(form->size(), QSize(741, 483));
        const QString file = QStringLiteral("childform-%1-%2.png").arg(QLatin1String(names[tab]), phase);
        QVERIFY(!ChartScreenshots::save(form, file).isEmpty());
    }
}

QTEST_MAIN(TestChildForm)
#include "tst_childform.moc"
